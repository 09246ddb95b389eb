(defrule cpu-threads
  "Nodes of one subcluster run the same number of threads on a core. A node
   that differs has simultaneous multithreading switched the other way."
  (phase (stage compare))
  (cpu (node_id ?node) (subcluster ?subcluster) (threads_per_core ?threads))
  (test (<> ?threads (usual cpu threads_per_core ?subcluster)))
  =>
  (assert (sign (id "cpu-threads-differ") (node_id ?node) (subcluster ?subcluster)
                (severity 50) (confidence (agreement cpu threads_per_core ?subcluster))
                (args (str-cat ?threads) (str-cat (usual cpu threads_per_core ?subcluster))))))
