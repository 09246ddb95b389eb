(defrule unit-failed
  "No unit of the system manager has failed."
  (phase (stage compare))
  (unit (node_id ?node) (subcluster ?subcluster) (unit_name ?unit) (active_state "failed"))
  =>
  (assert (sign (id "unit-failed") (node_id ?node) (subcluster ?subcluster)
                (severity 50) (confidence 90) (args ?unit))))
