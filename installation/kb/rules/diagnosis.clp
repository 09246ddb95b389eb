; Diagnoses of one node: what is behind its signs. They come after all other rules, since a
; sign that is still to come may speak against one.

(defrule diagnosis-memory-module
  "Memory is missing or miscounts: a module fails."
  (declare (salience -10))
  (sign (node_id ?node) (subcluster ?subcluster)
        (id "memory-size-differs" |
            "memory-errors-corrected" |
            "memory-errors-uncorrected"))
  =>
  (assert (diagnosis (id "memory-module-failing") (node_id ?node) (subcluster ?subcluster)
                     (severity 85) (confidence 80)
                     (remedy "Drain the node; reseat or replace the memory module."))))

(defrule diagnosis-memory-pressure
  "Nearly no memory is available and swap space is in use: the node thrashes."
  (declare (salience -10))
  (sign (id "memory-low") (node_id ?node) (subcluster ?subcluster))
  (sign (id "swap-in-use") (node_id ?node))
  =>
  (assert (diagnosis (id "memory-overcommitted") (node_id ?node) (subcluster ?subcluster)
                     (severity 60) (confidence 90)
                     (remedy "End the largest processes; check the memory limits of jobs."))))

(defrule diagnosis-disk
  "A RAID lost a disk, or the kernel made a file system read-only."
  (declare (salience -10))
  (sign (node_id ?node) (subcluster ?subcluster)
        (id "raid-degraded" |
            "filesystem-read-only"))
  =>
  (assert (diagnosis (id "disk-failing") (node_id ?node) (subcluster ?subcluster)
                     (severity 90) (confidence 70)
                     (remedy "Look for I/O errors in the kernel log; replace the disk."))))

(defrule diagnosis-cable
  "A link that is down, slow or faulty on one node alone: its cable or port."
  (declare (salience -10))
  (sign (node_id ?node) (subcluster ?subcluster) (args ?interface $?)
        (id "link-down" |
            "link-speed-differs" |
            "link-errors"))
  (not (sign (id "link-down") (node_id ~?node) (subcluster ?subcluster) (args ?interface $?)))
  =>
  (assert (diagnosis (id "cable-or-port-faulty") (node_id ?node) (subcluster ?subcluster)
                     (severity 70) (confidence 60)
                     (remedy "Reseat or change the cable, then try another port of the switch."))))

(defrule diagnosis-restart
  "Another kernel runs than on the other nodes, though the system is the same."
  (declare (salience -10))
  (sign (id "kernel-release-differs") (node_id ?node) (subcluster ?subcluster))
  (not (sign (id "os-release-differs") (node_id ?node)))
  =>
  (assert (diagnosis (id "restart-pending") (node_id ?node) (subcluster ?subcluster)
                     (severity 40) (confidence 60)
                     (remedy "Drain and restart the node so that it runs the installed kernel."))))

(defrule diagnosis-update
  "Both the kernel and the system differ: the node missed an update."
  (declare (salience -10))
  (sign (id "kernel-release-differs") (node_id ?node) (subcluster ?subcluster))
  (sign (id "os-release-differs") (node_id ?node))
  =>
  (assert (diagnosis (id "update-missed") (node_id ?node) (subcluster ?subcluster)
                     (severity 50) (confidence 80)
                     (remedy "Update the node, or install it anew from the current image."))))

(defrule diagnosis-firmware
  "Threads or processors differ where the model is the same: a firmware setting."
  (declare (salience -10))
  (sign (node_id ?node) (subcluster ?subcluster)
        (id "cpu-threads-differ" |
            "cpu-count-differs"))
  (not (sign (id "cpu-model-differs") (node_id ?node)))
  =>
  (assert (diagnosis (id "firmware-settings-differ") (node_id ?node) (subcluster ?subcluster)
                     (severity 60) (confidence 60)
                     (remedy "Compare the firmware settings with those of a node in order."))))

(defrule diagnosis-clock
  "The clock is away and follows no server: it drifts."
  (declare (salience -10))
  (sign (id "clock-not-synchronised") (node_id ?node) (subcluster ?subcluster))
  (sign (id "clock-offset") (node_id ?node))
  =>
  (assert (diagnosis (id "clock-drifting") (node_id ?node) (subcluster ?subcluster)
                     (severity 70) (confidence 90)
                     (remedy "Start the time service of the node and check its servers."))))
