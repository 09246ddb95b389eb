(defrule time-zone
  "Nodes of one subcluster have the same time zone."
  (phase (stage compare))
  (clock (node_id ?node) (subcluster ?subcluster) (time_zone ?zone))
  (test (neq ?zone (usual clock time_zone ?subcluster)))
  =>
  (assert (sign (id "time-zone-differs") (node_id ?node) (subcluster ?subcluster)
                (severity 30) (confidence (agreement clock time_zone ?subcluster))
                (args ?zone (usual clock time_zone ?subcluster)))))
