(defrule limit-open-files
  "A node may open enough files at a time: open-files-limit of the configuration,
   by default 262,144."
  (phase (stage compare))
  (sysctl (node_id ?node) (subcluster ?subcluster) (key "fs.file-max") (value ?value))
  (test (< (string-to-field ?value) (limit "open-files-limit" 262144)))
  =>
  (assert (sign (id "open-files-limit-low") (node_id ?node) (subcluster ?subcluster)
                (severity 40) (confidence 100) (args ?value))))
