(defrule limit-socket-buffers
  "A socket may have a receive buffer of socket-buffers bytes, by default 212,992,
   which is what the kernel comes with. Fast networks want more."
  (phase (stage compare))
  (sysctl (node_id ?node) (subcluster ?subcluster) (key "net.core.rmem_max") (value ?value))
  (test (< (string-to-field ?value) (limit "socket-buffers" 212992)))
  =>
  (assert (sign (id "socket-buffers-small") (node_id ?node) (subcluster ?subcluster)
                (severity 20) (confidence 100) (args ?value))))
