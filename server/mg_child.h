/* Child processes: CGI programs and the commands of server-side includes. Each runs in a process group of its
 * own and is waited for, however it ends. Only the children started here are waited for, so that the
 * application may have others.
 *
 * The table of running children is the process's, shared by all its servers: any of them that is polled
 * reaps. */
#ifndef KESTREL_SERVER_MG_CHILD_H
#define KESTREL_SERVER_MG_CHILD_H

#include <sys/types.h>

enum {
  MG_MAX_CHILDREN = 64,        /* running at a time; beyond it none is started */
  MG_CHILD_GRACE_SECONDS = 5,  /* for a child to end after it was asked to, or after its output ended */
  MG_MAX_CHILD_ARGUMENTS = 32, /* elements of argv with the null pointer at its end */
};

/* Starts `argv` (its first element is the program's path; it is not searched for) with standard input and
 * output on `sock`, in `directory` (null: the current one) and with `environment` (null: the server's own).
 * Standard error stays the server's; no other descriptor is passed on, and signals are as by default. When
 * the program cannot be executed the child prints an answer of status 500 on `sock`. Returns its process id;
 * -1 with errno when there can be no process, EAGAIN with MG_MAX_CHILDREN running. `sock` stays the caller's.
 */
pid_t start_child(char *const argv[], char *const environment[], const char *directory, int sock);
/* Asks the child's whole process group to end (SIGTERM), and ends what is left of it MG_CHILD_GRACE_SECONDS
 * later (SIGKILL). Nothing for a pid that is not a running child's. */
void end_child(pid_t);
/* Nobody needs the child any more, but it may finish what it does: it is ended only when it still runs
 * MG_CHILD_GRACE_SECONDS later. */
void let_child_finish(pid_t);
/* Whether the child has not been reaped yet. */
bool is_running_child(pid_t);
int running_children(void);
/* Reaps, without blocking, the children that have ended, and ends those whose time is over. Called in every
 * pass. */
void reap_children(void);
/* For the end of a server: what was asked to end ends now. */
void end_children_at_once(void);

#endif
