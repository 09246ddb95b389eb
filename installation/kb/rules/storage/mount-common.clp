(defrule mount-common
  "Notes the mount points that most nodes of a subcluster have, for the rule
   mount-present."
  (phase (stage compare))
  (mount (subcluster ?subcluster) (mount_point ?mount) (fs_type ~"autofs"))
  (test (> (* 2 (number-of mount ?subcluster mount_point ?mount))
           (number-of node ?subcluster)))
  =>
  (assert (common_mount (subcluster ?subcluster) (mount_point ?mount))))
