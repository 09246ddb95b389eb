(defrule one
  (sign (id "a" |
            "b" | "c"))
  (not (sign (id "d")))
  ; (sign (id "e"))
  => (ignored (id "f"))
  (assert (diagnosis (id "g") (id "h"))))
(defrule two (sign (id "i"))
  (sign (id ?x&"j"|"k"))
=>
  (assert (diagnosis (id "g"))))
