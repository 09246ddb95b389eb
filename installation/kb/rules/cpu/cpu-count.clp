(defrule cpu-count
  "Nodes of one subcluster have the same number of processors."
  (cpu (node_id ?node) (cpu_count ?count))
  (exists (cpu (cpu_count ~?count)))
  =>
  (assert (sign (id "cpu-count-differs") (node_id ?node))))
