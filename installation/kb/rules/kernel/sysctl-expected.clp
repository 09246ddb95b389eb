(defrule sysctl-expected
  "Kernel parameters have the values that the knowledge base document expects
   for the item kernel."
  (phase (stage compare))
  (expected (item "kernel") (element "sysctl") (attribute "key") (key ?key) (value ?wanted))
  (sysctl (node_id ?node) (subcluster ?subcluster) (key ?key) (value ?value&~?wanted))
  =>
  (assert (sign (id "sysctl-not-as-expected") (node_id ?node) (subcluster ?subcluster)
                (severity 50) (confidence 100) (args ?key ?value ?wanted))))
