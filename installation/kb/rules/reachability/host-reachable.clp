(defrule host-reachable
  "Every target of the option sets answers every node; a lost packet counts."
  (phase (stage compare))
  (reach (node_id ?node) (subcluster ?subcluster) (option_id ?option) (target ?target)
         (packet_loss ?loss&:(> ?loss 0)))
  =>
  (assert (sign (id "host-unreachable") (node_id ?node) (subcluster ?subcluster)
                (severity ?loss) (confidence 90) (args ?target ?option (str-cat ?loss)))))
