; The middle and not a vote, since the kernel keeps a little for itself, and not always the same.
(defrule memory-size
  "Nodes of one subcluster have the same amount of memory, within two percent.
   A node with less has lost a memory module."
  (phase (stage compare))
  (memory (node_id ?node) (subcluster ?subcluster) (total_kb ?total))
  (test (> (abs (- ?total (middle memory total_kb ?subcluster)))
           (* 0.02 (middle memory total_kb ?subcluster))))
  =>
  (assert (sign (id "memory-size-differs") (node_id ?node) (subcluster ?subcluster)
                (severity 80) (confidence 90)
                (args (str-cat ?total) (str-cat (middle memory total_kb ?subcluster))))))
