/* The record of the startup configuration that clients keep on the switch: when it was made and updated, as
 * they said, and the serial number of the last upload. The times are kept in a file, "startupcfg_info_doc" in
 * the folder user-apps of the product's root, as lines "key:value"; the numbers begin anew with the program.
 *
 * One record per process, used by the server's thread only. */
#ifndef KESTREL_MODULES_REST_STARTUPCFG_INFO_H
#define KESTREL_MODULES_REST_STARTUPCFG_INFO_H

#include "engine/rest_util.h"

enum { STARTUPCFG_TIME_SIZE = 24 }; /* terminator included */

typedef struct startupcfg_info_s {
  uint32_t serialNum;                       /* of the last configuration upload; 0 before the first */
  RC_t hasUpdated;                          /* 0 once a configuration came without a reload, else 1 */
  char cfgTime[STARTUPCFG_TIME_SIZE];       /* when the startup configuration was made */
  char cfgUpdateTime[STARTUPCFG_TIME_SIZE]; /* when it was updated */
} startupcfg_info_t;

extern startupcfg_info_t startupcfgInfo;

/* Begins with an empty record and reads the times from the file, which is made when it cannot be opened. */
RC_t initialize_transfer_variables(void);

/* Loads the times from the file; one whose key is missing stays. RC_FALSE when it cannot be opened. */
RC_t read_startupcfg_info_file(void);
/* Writes the times into the file, beside it first. Lines of other keys stay as they are, and so does an
 * update time in the file that is the record's creation time. RC_FALSE when it cannot be written; the file is
 * then as it was. */
RC_t write_startupcfg_info_file(void);

/* Plain access to the numbers. RC_FALSE for a null pointer. */
RC_t set_startup_config_has_updated_flag(RC_t updated);
RC_t get_startup_config_has_updated_flag(RC_t *updated);
RC_t set_startup_config_serial_number(uint32_t number);
RC_t get_startup_config_serial_number(uint32_t *number);

/* Store a time, at most 23 characters, and write the file unless nothing changes. RC_FALSE for a null or
 * empty text and when the file cannot be written. */
RC_t set_startup_config_time(const char *text);
RC_t set_startup_config_update_time(const char *text);
/* Read the file again and copy a time into a buffer of STARTUPCFG_TIME_SIZE bytes. RC_FALSE for a null buffer
 * and, with an empty text, when the file cannot be opened. */
RC_t get_startup_config_time(char *text);
RC_t get_startup_config_update_time(char *text);

#endif
