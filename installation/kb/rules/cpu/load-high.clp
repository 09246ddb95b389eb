(defrule load-high
  "Over 15 minutes no more processes want to run than a node has processors,
   with the factor load-high of the configuration, by default 1.5."
  (phase (stage compare))
  (cpu (node_id ?node) (subcluster ?subcluster) (cpu_count ?count))
  (load (node_id ?node) (load_15 ?load))
  (test (> ?load (* ?count (limit "load-high" 1.5))))
  =>
  (assert (sign (id "load-high") (node_id ?node) (subcluster ?subcluster)
                (severity 40) (confidence 80) (args (str-cat ?load) (str-cat ?count)))))
