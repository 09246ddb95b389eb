(defrule unit-expected
  "Services are in the state that the knowledge base document expects for the
   item services."
  (phase (stage compare))
  (expected (item "services") (element "unit") (attribute "name") (key ?unit) (value ?wanted))
  (unit (node_id ?node) (subcluster ?subcluster) (unit_name ?unit)
        (active_state ?state&~?wanted))
  =>
  (assert (sign (id "unit-not-as-expected") (node_id ?node) (subcluster ?subcluster)
                (severity 70) (confidence 90) (args ?unit ?state ?wanted))))
