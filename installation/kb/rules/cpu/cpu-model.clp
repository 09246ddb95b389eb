(defrule cpu-model
  "Nodes of one subcluster have processors of the same model. A parallel
   program waits for its slowest node."
  (phase (stage compare))
  (cpu (node_id ?node) (subcluster ?subcluster) (model ?model))
  (test (neq ?model (usual cpu model ?subcluster)))
  =>
  (assert (sign (id "cpu-model-differs") (node_id ?node) (subcluster ?subcluster)
                (severity 50) (confidence (agreement cpu model ?subcluster))
                (args ?model (usual cpu model ?subcluster)))))
