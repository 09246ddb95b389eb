(defrule link-state
  "A network interface that is switched on has a link."
  (phase (stage compare))
  (link (node_id ?node) (subcluster ?subcluster) (interface ?interface) (flags $?flags))
  (test (and (member$ "UP" ?flags) (not (member$ "LOWER_UP" ?flags))))
  =>
  (assert (sign (id "link-down") (node_id ?node) (subcluster ?subcluster)
                (severity 75) (confidence 80) (args ?interface))))
