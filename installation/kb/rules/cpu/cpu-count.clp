(defrule cpu-count
  "Nodes of one subcluster have the same number of processors. A node with
   fewer than the others has broken or disabled ones, or another setting of
   its firmware."
  (phase (stage compare))
  (cpu (node_id ?node) (subcluster ?subcluster) (cpu_count ?count))
  (test (<> ?count (usual cpu cpu_count ?subcluster)))
  =>
  (assert (sign (id "cpu-count-differs") (node_id ?node) (subcluster ?subcluster)
                (severity 80) (confidence (agreement cpu cpu_count ?subcluster))
                (args (str-cat ?count) (str-cat (usual cpu cpu_count ?subcluster))))))
