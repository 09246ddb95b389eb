(defrule filesystem-inodes
  "File systems have inodes left: less than inodes-exhausted percent is used,
   by default 90. Without one no file can be created, however much room there is."
  (phase (stage compare))
  (inodes (node_id ?node) (subcluster ?subcluster) (mount_point ?mount) (used_percent ?used))
  (test (>= ?used (limit "inodes-exhausted" 90)))
  =>
  (assert (sign (id "inodes-exhausted") (node_id ?node) (subcluster ?subcluster)
                (severity 70) (confidence 100) (args ?mount (str-cat ?used)))))
