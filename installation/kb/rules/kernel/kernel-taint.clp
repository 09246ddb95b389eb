(defrule kernel-taint
  "The kernel has not noted a machine check, a bad page, an oops or a soft
   lockup of its own (bits 4, 5, 7 and 14 of kernel.tainted)."
  (phase (stage compare))
  (sysctl (node_id ?node) (subcluster ?subcluster) (key "kernel.tainted") (value ?value))
  (test (or (bit-set (string-to-field ?value) 4)
            (bit-set (string-to-field ?value) 5)
            (bit-set (string-to-field ?value) 7)
            (bit-set (string-to-field ?value) 14)))
  =>
  (assert (sign (id "kernel-tainted") (node_id ?node) (subcluster ?subcluster)
                (severity 60) (confidence 90) (args ?value))))
