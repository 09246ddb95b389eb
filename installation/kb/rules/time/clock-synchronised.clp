(defrule clock-synchronised
  "The clock of a node follows a time server."
  (phase (stage compare))
  (clock (node_id ?node) (subcluster ?subcluster) (synchronised no))
  =>
  (assert (sign (id "clock-not-synchronised") (node_id ?node) (subcluster ?subcluster)
                (severity 60) (confidence 90))))
