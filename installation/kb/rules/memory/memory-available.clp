(defrule memory-available
  "A node has memory available: more than memory-low percent of all, by
   default 5."
  (phase (stage compare))
  (memory (node_id ?node) (subcluster ?subcluster) (total_kb ?total) (available_kb ?available))
  (test (< (percent ?available ?total) (limit "memory-low" 5)))
  =>
  (assert (sign (id "memory-low") (node_id ?node) (subcluster ?subcluster)
                (severity 60) (confidence 90)
                (args (str-cat ?available) (str-cat ?total)))))
