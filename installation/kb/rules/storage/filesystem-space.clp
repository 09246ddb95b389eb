(defrule filesystem-space
  "File systems have room: less than filesystem-nearly-full percent is used,
   by default 85; from filesystem-full percent on, by default 95, jobs fail.
   What is full by nature, such as an image, does not count."
  (phase (stage compare))
  (filesystem (node_id ?node) (subcluster ?subcluster) (mount_point ?mount)
              (fs_type ?type&~"squashfs"&~"iso9660"&~"overlay")
              (used_percent ?used))
  (test (>= ?used (limit "filesystem-nearly-full" 85)))
  =>
  (if (>= ?used (limit "filesystem-full" 95))
    then (bind ?id "filesystem-full")
         (bind ?severity 80)
    else (bind ?id "filesystem-nearly-full")
         (bind ?severity 40))
  (assert (sign (id ?id) (node_id ?node) (subcluster ?subcluster)
                (severity ?severity) (confidence 100)
                (args ?mount (str-cat ?used)))))
