(defrule kernel-command-line
  "Nodes of one subcluster started their kernel with the same parameters."
  (phase (stage compare))
  (boot (node_id ?node) (subcluster ?subcluster) (command_line ?line))
  (test (neq ?line (usual boot command_line ?subcluster)))
  =>
  (assert (sign (id "kernel-command-line-differs") (node_id ?node) (subcluster ?subcluster)
                (severity 40) (confidence (agreement boot command_line ?subcluster))
                (args ?line (usual boot command_line ?subcluster)))))
