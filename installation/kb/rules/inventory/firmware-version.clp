(defrule firmware-version
  "Nodes of one product in a subcluster have the same version of the firmware."
  (phase (stage compare))
  (firmware (node_id ?node) (subcluster ?subcluster) (product ?product)
            (firmware_version ?version))
  (test (neq ?version (usual firmware firmware_version ?subcluster product ?product)))
  =>
  (assert (sign (id "firmware-differs") (node_id ?node) (subcluster ?subcluster)
                (severity 40)
                (confidence (agreement firmware firmware_version ?subcluster product ?product))
                (args ?version
                      (usual firmware firmware_version ?subcluster product ?product)))))
