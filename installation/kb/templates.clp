; The templates of the facts that rules look at and assert. Loaded ahead of all rule files.

(deftemplate cpu
  (slot node_id (type STRING))
  (slot cpu_count (type INTEGER)))

(deftemplate sign
  (slot id (type STRING))
  (slot node_id (type STRING)))
