; a circle of loads, all forms of a rule
(batch* rules/a.clp)
(load* "rules/b.clp")
(load rules/c.clp)
(defrule first "Says what
it is for."
  (declare (salience 10))
  (fact (id "x") (id ?other) (name ?n&"a"|"b"))
  (not (sign (id "y")))
  =>
  (bind ?id "bound-1")
  (if (> 1 0) then (bind ?id "bound-2") else (bind ?other "z"))
  (assert (sign (id ?id) (id "direct"))))
====
(batch* rules/b.clp)
(defrule a (phase) => (assert (sign (id "from a"))))
====
(batch* rules/base.clp)
(defrule b
====
(defrule c => (assert (diagnosis (id ?*global*) (id "c|d"))))
