(defrule link-errors
  "A network interface loses less than one packet in 100,000 to errors."
  (phase (stage compare))
  (link_counters (node_id ?node) (subcluster ?subcluster) (interface ?interface)
                 (packets ?packets) (errors ?errors&:(> (* 100000 ?errors) ?packets)))
  =>
  (assert (sign (id "link-errors") (node_id ?node) (subcluster ?subcluster)
                (severity 50) (confidence 80)
                (args ?interface (str-cat ?errors) (str-cat ?packets)))))
