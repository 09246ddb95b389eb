(defrule zombie-processes
  "No process has ended without its parent taking notice. Many of them, or
   old ones, come from a parent that hangs."
  (phase (stage compare))
  (process (node_id ?node) (subcluster ?subcluster) (pid ?pid) (process_state "Z")
           (owner ?owner) (program ?program))
  =>
  (assert (sign (id "zombie-process") (node_id ?node) (subcluster ?subcluster)
                (severity 20) (confidence 60) (args (str-cat ?pid) ?owner ?program))))
