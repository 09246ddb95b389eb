; Facts and functions of the knowledge base. Loaded ahead of every rule file.
;
; An analysis goes like this: the analyzer extensions turn what the providers printed into
; the facts below; when all of them are in, (phase (stage compare)) is asserted, which every
; rule waits for; the rules assert signs; the diagnosis rules, which come last, make diagnoses
; of them. etc/CLIPS_type_map.xml gives the type of each slot: a name has one type everywhere.

; --- The run -----------------------------------------------------------------------------

(deftemplate phase
  (slot stage (type SYMBOL) (allowed-symbols compare)))

; One node of the run.
(deftemplate node
  (slot node_id (type STRING))
  (slot subcluster (type STRING) (default "default-subcluster"))
  (multislot roles (type STRING)))

; One run of one provider on one node. Age and duration in seconds; succeeded says whether the
; exit status is among the provider's success codes.
(deftemplate provider_run
  (slot node_id (type STRING))
  (slot subcluster (type STRING) (default "default-subcluster"))
  (slot provider (type STRING))
  (slot option_id (type STRING) (default "None"))
  (slot exit_status (type INTEGER))
  (slot succeeded (type SYMBOL) (allowed-symbols yes no))
  (slot age (type INTEGER))
  (slot duration (type FLOAT)))

; One parameter of analyzer/config in etc/qorn.xml. A group's parameters accumulate, so that
; the value of a parameter is its last one.
(deftemplate config_param
  (slot group (type STRING))
  (slot param (type STRING))
  (multislot values (type STRING)))

; One expected result of a knowledge base document (etc/kb): the child ELEMENT of ITEM whose
; ATTRIBUTE is KEY is to be VALUE. Without an attribute, attribute and key are "default".
(deftemplate expected
  (slot item (type STRING))
  (slot element (type STRING))
  (slot attribute (type STRING))
  (slot key (type STRING))
  (slot value (type STRING)))

; --- What providers bring ----------------------------------------------------------------

; lscpu
(deftemplate cpu
  (slot node_id (type STRING))
  (slot subcluster (type STRING) (default "default-subcluster"))
  (slot model (type STRING))
  (slot sockets (type INTEGER))
  (slot cores_per_socket (type INTEGER))
  (slot threads_per_core (type INTEGER))
  (slot cpu_count (type INTEGER))
  (slot cpu_offline (type INTEGER)))

; loadavg
(deftemplate load
  (slot node_id (type STRING))
  (slot subcluster (type STRING) (default "default-subcluster"))
  (slot load_1 (type FLOAT))
  (slot load_5 (type FLOAT))
  (slot load_15 (type FLOAT)))

; meminfo; sizes in kB as the kernel gives them
(deftemplate memory
  (slot node_id (type STRING))
  (slot subcluster (type STRING) (default "default-subcluster"))
  (slot total_kb (type INTEGER))
  (slot available_kb (type INTEGER))
  (slot swap_total_kb (type INTEGER))
  (slot swap_free_kb (type INTEGER)))

; edac: error counts of one memory controller since the node started
(deftemplate memory_errors
  (slot node_id (type STRING))
  (slot subcluster (type STRING) (default "default-subcluster"))
  (slot controller (type STRING))
  (slot corrected (type INTEGER))
  (slot uncorrected (type INTEGER)))

; df
(deftemplate filesystem
  (slot node_id (type STRING))
  (slot subcluster (type STRING) (default "default-subcluster"))
  (slot mount_point (type STRING))
  (slot device (type STRING))
  (slot fs_type (type STRING))
  (slot size_kb (type INTEGER))
  (slot used_percent (type INTEGER)))

; df_inodes
(deftemplate inodes
  (slot node_id (type STRING))
  (slot subcluster (type STRING) (default "default-subcluster"))
  (slot mount_point (type STRING))
  (slot used_percent (type INTEGER)))

; mounts
(deftemplate mount
  (slot node_id (type STRING))
  (slot subcluster (type STRING) (default "default-subcluster"))
  (slot mount_point (type STRING))
  (slot device (type STRING))
  (slot fs_type (type STRING))
  (multislot mount_options (type STRING)))

; A mount point that most nodes of a subcluster have; the rule mount-common asserts it.
(deftemplate common_mount
  (slot subcluster (type STRING))
  (slot mount_point (type STRING)))

; mdstat
(deftemplate raid
  (slot node_id (type STRING))
  (slot subcluster (type STRING) (default "default-subcluster"))
  (slot device (type STRING))
  (slot disks_wanted (type INTEGER))
  (slot disks_active (type INTEGER)))

; ip_link; the flags are those between angle brackets: UP is what the administrator wants,
; LOWER_UP what the cable says
(deftemplate link
  (slot node_id (type STRING))
  (slot subcluster (type STRING) (default "default-subcluster"))
  (slot interface (type STRING))
  (slot mtu (type INTEGER))
  (multislot flags (type STRING)))

; link_speed
(deftemplate link_speed
  (slot node_id (type STRING))
  (slot subcluster (type STRING) (default "default-subcluster"))
  (slot interface (type STRING))
  (slot speed_mbps (type INTEGER)))

; net_dev: counters since the node started
(deftemplate link_counters
  (slot node_id (type STRING))
  (slot subcluster (type STRING) (default "default-subcluster"))
  (slot interface (type STRING))
  (slot packets (type INTEGER))
  (slot errors (type INTEGER)))

; uname
(deftemplate kernel
  (slot node_id (type STRING))
  (slot subcluster (type STRING) (default "default-subcluster"))
  (slot kernel_release (type STRING))
  (slot machine (type STRING)))

; cmdline; without what is each node's own, such as BOOT_IMAGE, ip and root
(deftemplate boot
  (slot node_id (type STRING))
  (slot subcluster (type STRING) (default "default-subcluster"))
  (slot command_line (type STRING)))

; sysctl; the key with dots
(deftemplate sysctl
  (slot node_id (type STRING))
  (slot subcluster (type STRING) (default "default-subcluster"))
  (slot key (type STRING))
  (slot value (type STRING)))

; timedatectl
(deftemplate clock
  (slot node_id (type STRING))
  (slot subcluster (type STRING) (default "default-subcluster"))
  (slot time_zone (type STRING))
  (slot synchronised (type SYMBOL) (allowed-symbols yes no)))

; date: seconds ahead of the collecting host's clock
(deftemplate clock_offset
  (slot node_id (type STRING))
  (slot subcluster (type STRING) (default "default-subcluster"))
  (slot offset (type FLOAT)))

; systemd_units
(deftemplate unit
  (slot node_id (type STRING))
  (slot subcluster (type STRING) (default "default-subcluster"))
  (slot unit_name (type STRING))
  (slot active_state (type STRING))
  (slot sub_state (type STRING)))

; processes; the state's first letter
(deftemplate process
  (slot node_id (type STRING))
  (slot subcluster (type STRING) (default "default-subcluster"))
  (slot pid (type INTEGER))
  (slot process_state (type STRING))
  (slot owner (type STRING))
  (slot program (type STRING)))

; os_release
(deftemplate os_release
  (slot node_id (type STRING))
  (slot subcluster (type STRING) (default "default-subcluster"))
  (slot os_name (type STRING))
  (slot os_version (type STRING)))

; dmi
(deftemplate firmware
  (slot node_id (type STRING))
  (slot subcluster (type STRING) (default "default-subcluster"))
  (slot product (type STRING))
  (slot firmware_version (type STRING)))

; lsblk, whole disks alone
(deftemplate disk
  (slot node_id (type STRING))
  (slot subcluster (type STRING) (default "default-subcluster"))
  (slot device (type STRING))
  (slot model (type STRING))
  (slot size_bytes (type INTEGER)))

; reach: one target of one option set; loss in percent
(deftemplate reach
  (slot node_id (type STRING))
  (slot subcluster (type STRING) (default "default-subcluster"))
  (slot option_id (type STRING) (default "None"))
  (slot target (type STRING))
  (slot packet_loss (type INTEGER)))

; --- What rules find ---------------------------------------------------------------------

; One finding on one node. The id is a message id of kb/data/msg_schema.xml; severity and
; confidence go from 0 to 100 (severity: informational to 24, warning to 74, then critical);
; args are the texts that the message shows.
(deftemplate sign
  (slot id (type STRING))
  (slot node_id (type STRING))
  (slot subcluster (type STRING) (default "default-subcluster"))
  (slot severity (type INTEGER) (range 0 100))
  (slot confidence (type INTEGER) (range 0 100))
  (multislot args (type STRING)))

; What is behind one or more signs. A diagnosis of a whole subcluster has no node_id.
(deftemplate diagnosis
  (slot id (type STRING))
  (slot node_id (type STRING) (default ""))
  (slot subcluster (type STRING) (default "default-subcluster"))
  (slot severity (type INTEGER) (range 0 100))
  (slot confidence (type INTEGER) (range 0 100))
  (slot remedy (type STRING)))

; --- Functions ---------------------------------------------------------------------------
;
; A rule calls those that look at other facts (limit, usual, agreement, middle, number-of) in a
; (test ...) behind (phase (stage compare)), or on its right-hand side. Inside a pattern they
; would run as each fact comes in, ahead of the facts that they are to look at.

; The number that etc/qorn.xml gives for a parameter, else the default.
(deffunction limit (?name ?default)
  (bind ?found (find-fact ((?p config_param)) (eq ?p:param ?name)))
  (if (= (length$ ?found) 0) then (return ?default))
  (bind ?values (fact-slot-value (nth$ 1 ?found) values))
  (if (= (length$ ?values) 0) then (return ?default))
  (bind ?number (string-to-field (nth$ (length$ ?values) ?values)))
  (if (numberp ?number) then (return ?number))
  ?default)

; The share of PART in WHOLE, in whole percent; 0 of nothing.
(deffunction percent (?part ?whole)
  (if (= ?whole 0) then 0 else (div (* 100 ?part) ?whole)))

(deffunction bit-set (?number ?bit)
  (= 1 (mod (div ?number (integer (** 2 ?bit))) 2)))

; Whether a fact belongs to a subcluster and, with KEY-SLOT and KEY as further arguments, has
; that key, such as one interface.
(deffunction belongs (?fact ?subcluster $?key)
  (and (eq (fact-slot-value ?fact subcluster) ?subcluster)
       (or (= (length$ ?key) 0)
           (eq (fact-slot-value ?fact (nth$ 1 ?key)) (nth$ 2 ?key)))))

; The results so far, three places each: of what, the value, its share in percent. All facts
; are in before the first rule asks, so each result is computed once. (reset) clears them.
(defglobal ?*results* = (create$))

; Value and share of a subject, empty when it is not there yet.
(deffunction result (?subject)
  (bind ?place (member$ ?subject ?*results*))
  (if ?place then (subseq$ ?*results* (+ ?place 1) (+ ?place 2)) else (create$)))

(deffunction keep-result (?subject ?value ?share)
  (bind ?*results* (create$ ?*results* ?subject ?value ?share))
  (create$ ?value ?share))

; The most frequent value of a slot within a subcluster, of equally frequent ones the first,
; and its share in percent.
(deffunction vote (?template ?slot ?subcluster $?key)
  (bind ?subject (implode$ (create$ vote ?template ?slot ?subcluster ?key)))
  (bind ?result (result ?subject))
  (if (> (length$ ?result) 0) then (return ?result))
  (bind ?values (create$))
  (bind ?counts (create$))
  (bind ?total 0)
  (do-for-all-facts ((?f ?template)) (belongs ?f ?subcluster ?key)
    (bind ?total (+ ?total 1))
    (bind ?value (fact-slot-value ?f ?slot))
    (bind ?place (member$ ?value ?values))
    (if ?place
      then (bind ?counts (replace$ ?counts ?place ?place (+ (nth$ ?place ?counts) 1)))
      else (bind ?values (create$ ?values ?value))
           (bind ?counts (create$ ?counts 1))))
  (bind ?best 1)
  (loop-for-count (?i 2 (length$ ?counts))
    (if (> (nth$ ?i ?counts) (nth$ ?best ?counts)) then (bind ?best ?i)))
  (if (= ?total 0) then (return (keep-result ?subject "" 0)))
  (keep-result ?subject (nth$ ?best ?values) (percent (nth$ ?best ?counts) ?total)))

; The value that most nodes of a subcluster have.
(deffunction usual (?template ?slot ?subcluster $?key)
  (nth$ 1 (vote ?template ?slot ?subcluster ?key)))

; How many of a subcluster's nodes have it, in percent: how sure one can be that a node with
; another value is the one that is wrong.
(deffunction agreement (?template ?slot ?subcluster $?key)
  (nth$ 2 (vote ?template ?slot ?subcluster ?key)))

; The value in the middle of a subcluster's, for numbers that are alike but seldom equal.
(deffunction middle (?template ?slot ?subcluster)
  (bind ?subject (implode$ (create$ middle ?template ?slot ?subcluster)))
  (bind ?result (result ?subject))
  (if (> (length$ ?result) 0) then (return (nth$ 1 ?result)))
  (bind ?values (create$))
  (do-for-all-facts ((?f ?template)) (belongs ?f ?subcluster)
    (bind ?values (create$ ?values (fact-slot-value ?f ?slot))))
  (bind ?values (sort > ?values))
  (nth$ 1 (keep-result ?subject (nth$ (div (+ (length$ ?values) 1) 2) ?values) 100)))

; How many facts of a template belong to a subcluster, and to a key if there is one.
(deffunction number-of (?template ?subcluster $?key)
  (bind ?subject (implode$ (create$ number-of ?template ?subcluster ?key)))
  (bind ?result (result ?subject))
  (if (> (length$ ?result) 0) then (return (nth$ 1 ?result)))
  (bind ?facts (find-all-facts ((?f ?template)) (belongs ?f ?subcluster ?key)))
  (nth$ 1 (keep-result ?subject (length$ ?facts) 100)))
