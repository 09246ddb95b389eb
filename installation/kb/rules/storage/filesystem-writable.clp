(defrule filesystem-writable
  "File systems on disks of the node can be written. The kernel makes one
   read-only when its disk fails."
  (phase (stage compare))
  (mount (node_id ?node) (subcluster ?subcluster) (mount_point ?mount) (device ?device)
         (fs_type ?type&"ext3"|"ext4"|"xfs"|"btrfs") (mount_options $? "ro" $?))
  =>
  (assert (sign (id "filesystem-read-only") (node_id ?node) (subcluster ?subcluster)
                (severity 90) (confidence 80) (args ?mount ?device))))
