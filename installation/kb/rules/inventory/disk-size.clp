(defrule disk-size
  "The same disk has the same size on all nodes of a subcluster."
  (phase (stage compare))
  (disk (node_id ?node) (subcluster ?subcluster) (device ?device) (model ?model)
        (size_bytes ?size))
  (test (<> ?size (usual disk size_bytes ?subcluster device ?device)))
  =>
  (assert (sign (id "disk-size-differs") (node_id ?node) (subcluster ?subcluster)
                (severity 30) (confidence (agreement disk size_bytes ?subcluster device ?device))
                (args ?device ?model (str-cat ?size)))))
