(defrule link-mtu
  "The same interface has the same largest packet size (MTU) on all nodes of a
   subcluster. Where it differs, large packets vanish and connections hang."
  (phase (stage compare))
  (link (node_id ?node) (subcluster ?subcluster) (interface ?interface) (mtu ?mtu))
  (test (<> ?mtu (usual link mtu ?subcluster interface ?interface)))
  =>
  (assert (sign (id "mtu-differs") (node_id ?node) (subcluster ?subcluster)
                (severity 75)
                (confidence (agreement link mtu ?subcluster interface ?interface))
                (args ?interface (str-cat ?mtu)))))
