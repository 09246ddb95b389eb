(defrule node-silent
  "At least one provider succeeds on every node. A node without any is down,
   or can not be reached by the collector."
  (phase (stage compare))
  (node (node_id ?node) (subcluster ?subcluster))
  (not (provider_run (node_id ?node) (succeeded yes)))
  =>
  (assert (sign (id "node-silent") (node_id ?node) (subcluster ?subcluster)
                (severity 95) (confidence 90))))
