(defrule provider-failed
  "Every provider ends with one of its success codes. What a failed one was
   to bring is missing, so that no rule on it can find anything."
  (phase (stage compare))
  (provider_run (node_id ?node) (subcluster ?subcluster) (provider ?provider)
                (option_id ?option) (exit_status ?status) (succeeded no))
  =>
  (assert (sign (id "provider-failed") (node_id ?node) (subcluster ?subcluster)
                (severity 50) (confidence 100)
                (args ?provider ?option (str-cat ?status)))))
