; The analyzer hands the parameter on in seconds.
(defrule data-age
  "No data are older than data-age-threshold, an option (-t) and a parameter
   in days, by default a week. Old data describe a cluster that is gone."
  (phase (stage compare))
  (provider_run (node_id ?node) (subcluster ?subcluster) (provider ?provider) (age ?age))
  (test (> ?age (limit "data-age-threshold" 604800)))
  =>
  (assert (sign (id "data-too-old") (node_id ?node) (subcluster ?subcluster)
                (severity 30) (confidence 100)
                (args ?provider (str-cat (div ?age 86400))))))
