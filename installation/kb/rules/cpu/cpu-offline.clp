(defrule cpu-offline
  "All processors of a node are online."
  (phase (stage compare))
  (cpu (node_id ?node) (subcluster ?subcluster) (cpu_offline ?offline&:(> ?offline 0)))
  =>
  (assert (sign (id "cpu-offline") (node_id ?node) (subcluster ?subcluster)
                (severity 60) (confidence 90) (args (str-cat ?offline)))))
