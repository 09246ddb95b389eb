(defrule raid-state
  "Software RAIDs have all their disks."
  (phase (stage compare))
  (raid (node_id ?node) (subcluster ?subcluster) (device ?device)
        (disks_wanted ?wanted) (disks_active ?active&:(< ?active ?wanted)))
  =>
  (assert (sign (id "raid-degraded") (node_id ?node) (subcluster ?subcluster)
                (severity 85) (confidence 100)
                (args ?device (str-cat ?active) (str-cat ?wanted)))))
