; The limits of the kernel that parallel programs run into first.
(batch* rules/kernel/limit-open-files.clp)
(batch* rules/kernel/limit-processes.clp)
(batch* rules/kernel/limit-socket-buffers.clp)
