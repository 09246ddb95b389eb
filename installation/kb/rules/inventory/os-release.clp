(defrule os-release
  "Nodes of one subcluster run the same version of the operating system."
  (phase (stage compare))
  (os_release (node_id ?node) (subcluster ?subcluster) (os_name ?name) (os_version ?version))
  (test (neq ?version (usual os_release os_version ?subcluster)))
  =>
  (assert (sign (id "os-release-differs") (node_id ?node) (subcluster ?subcluster)
                (severity 50) (confidence (agreement os_release os_version ?subcluster))
                (args ?name ?version (usual os_release os_version ?subcluster)))))
