(defrule link-speed
  "The same interface has the same speed on all nodes of a subcluster. A slower
   one has a bad cable, or a port that negotiated badly."
  (phase (stage compare))
  (link_speed (node_id ?node) (subcluster ?subcluster) (interface ?interface)
              (speed_mbps ?speed))
  (test (<> ?speed (usual link_speed speed_mbps ?subcluster interface ?interface)))
  =>
  (assert (sign (id "link-speed-differs") (node_id ?node) (subcluster ?subcluster)
                (severity 70)
                (confidence (agreement link_speed speed_mbps ?subcluster interface ?interface))
                (args ?interface (str-cat ?speed)))))
