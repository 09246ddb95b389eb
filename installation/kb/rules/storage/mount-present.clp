; Every node that sent its mounts has "/", so a silent node is not reported here.
(defrule mount-present
  "A node has the file systems mounted that most nodes of its subcluster have."
  (phase (stage compare))
  (common_mount (subcluster ?subcluster) (mount_point ?mount))
  (mount (node_id ?node) (subcluster ?subcluster) (mount_point "/"))
  (not (mount (node_id ?node) (mount_point ?mount)))
  =>
  (assert (sign (id "mount-missing") (node_id ?node) (subcluster ?subcluster)
                (severity 75) (confidence 90) (args ?mount))))
