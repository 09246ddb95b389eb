; Diagnoses of a whole subcluster: the same sign on several nodes has one cause, and not on
; the nodes. They come after all other rules.

(defrule shared-diagnosis-time-server
  "Clocks of several nodes follow no server: the server is what they share."
  (declare (salience -20))
  (sign (id "clock-not-synchronised") (node_id ?node) (subcluster ?subcluster))
  (sign (id "clock-not-synchronised") (node_id ~?node) (subcluster ?subcluster))
  =>
  (assert (diagnosis (id "time-server-unreachable") (subcluster ?subcluster)
                     (severity 75) (confidence 80)
                     (remedy "Check the time server and the way to it."))))

(defrule shared-diagnosis-file-server
  "One mount is missing on several nodes: its server, or the network to it."
  (declare (salience -20))
  (sign (id "mount-missing") (node_id ?node) (subcluster ?subcluster) (args ?mount))
  (sign (id "mount-missing") (node_id ~?node) (subcluster ?subcluster) (args ?mount))
  =>
  (assert (diagnosis (id "file-server-unreachable") (subcluster ?subcluster)
                     (severity 90) (confidence 70)
                     (remedy "Check the file server's exports, then mount on the nodes again."))))

(defrule shared-diagnosis-switch
  "One interface is down or has another MTU on several nodes: their switch."
  (declare (salience -20))
  (sign (node_id ?node) (subcluster ?subcluster) (args ?interface $?)
        (id "link-down" |
            "mtu-differs"))
  (sign (node_id ~?node) (subcluster ?subcluster) (args ?interface $?)
        (id "link-down" |
            "mtu-differs"))
  =>
  (assert (diagnosis (id "switch-misconfigured") (subcluster ?subcluster)
                     (severity 85) (confidence 60)
                     (remedy "Check power, ports and MTU of the switch that the nodes share."))))

(defrule shared-diagnosis-power
  "Several nodes of a subcluster are silent: power, or the network to them."
  (declare (salience -20))
  (sign (id "node-silent") (node_id ?node) (subcluster ?subcluster))
  (sign (id "node-silent") (node_id ~?node) (subcluster ?subcluster))
  =>
  (assert (diagnosis (id "subcluster-cut-off") (subcluster ?subcluster)
                     (severity 95) (confidence 70)
                     (remedy "Check power and the management switch of the racks."))))
