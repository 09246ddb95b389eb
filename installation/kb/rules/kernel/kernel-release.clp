(defrule kernel-release
  "Nodes of one subcluster run the same kernel. A node that differs missed an
   update, or the restart after it."
  (phase (stage compare))
  (kernel (node_id ?node) (subcluster ?subcluster) (kernel_release ?release))
  (test (neq ?release (usual kernel kernel_release ?subcluster)))
  =>
  (assert (sign (id "kernel-release-differs") (node_id ?node) (subcluster ?subcluster)
                (severity 50) (confidence (agreement kernel kernel_release ?subcluster))
                (args ?release (usual kernel kernel_release ?subcluster)))))
