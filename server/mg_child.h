/* Child processes: CGI programs and the commands of server-side includes. Each runs in a process group of its
 * own and is waited for, however it ends. */
#ifndef KESTREL_SERVER_MG_CHILD_H
#define KESTREL_SERVER_MG_CHILD_H

#include <sys/types.h>

/* Starts `argv` (its first element is the program's path) with standard input and output on `sock`, in
 * `directory` (null: the current one) and with `environment` (null: the server's own). When the program
 * cannot be executed the child prints an answer of status 500 on `sock`. Returns its process id, -1 when
 * there can be no process. `sock` stays the caller's. */
pid_t start_child(char *const argv[], char *const environment[], const char *directory, int sock);
/* Ends the child's whole process group; it is reaped in a later pass. Nothing for a pid that is not a
 * running child's. */
void end_child(pid_t);
/* Waits, without blocking, for children that have ended. Called in every pass. */
void reap_children(void);

#endif
