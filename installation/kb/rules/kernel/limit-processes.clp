(defrule limit-processes
  "A node may run enough processes and threads at a time: process-limit of the
   configuration, by default 32,768."
  (phase (stage compare))
  (sysctl (node_id ?node) (subcluster ?subcluster) (key "kernel.pid_max") (value ?value))
  (test (< (string-to-field ?value) (limit "process-limit" 32768)))
  =>
  (assert (sign (id "process-limit-low") (node_id ?node) (subcluster ?subcluster)
                (severity 40) (confidence 100) (args ?value))))
