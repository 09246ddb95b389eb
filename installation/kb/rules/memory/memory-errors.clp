(defrule memory-errors
  "The memory controllers count no errors. Corrected ones announce the others;
   an uncorrected one has cost data."
  (phase (stage compare))
  (memory_errors (node_id ?node) (subcluster ?subcluster) (controller ?controller)
                 (corrected ?corrected) (uncorrected ?uncorrected))
  (test (> (+ ?corrected ?uncorrected) 0))
  =>
  (if (> ?uncorrected 0)
    then (bind ?id "memory-errors-uncorrected")
         (bind ?severity 90)
    else (bind ?id "memory-errors-corrected")
         (bind ?severity 30))
  (assert (sign (id ?id) (node_id ?node) (subcluster ?subcluster)
                (severity ?severity) (confidence 100)
                (args ?controller (str-cat ?corrected) (str-cat ?uncorrected)))))
