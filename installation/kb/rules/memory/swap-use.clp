(defrule swap-use
  "A node does not live on its swap space: no more than swap-in-use percent
   of it is taken, by default 50. A node without swap space is in order."
  (phase (stage compare))
  (memory (node_id ?node) (subcluster ?subcluster) (swap_total_kb ?total) (swap_free_kb ?free))
  (test (> (percent (- ?total ?free) ?total) (limit "swap-in-use" 50)))
  =>
  (assert (sign (id "swap-in-use") (node_id ?node) (subcluster ?subcluster)
                (severity 40) (confidence 90)
                (args (str-cat (- ?total ?free)) (str-cat ?total)))))
