(defrule clock-offset
  "The clock of a node is no more than clock-offset seconds away from that of
   the collecting host, by default half a second."
  (phase (stage compare))
  (clock_offset (node_id ?node) (subcluster ?subcluster) (offset ?offset))
  (test (> (abs ?offset) (limit "clock-offset" 0.5)))
  =>
  (assert (sign (id "clock-offset") (node_id ?node) (subcluster ?subcluster)
                (severity 70) (confidence 80) (args (str-cat ?offset)))))
