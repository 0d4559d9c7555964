/* Scripts: files of lines of the configuration language that are kept on the switch. Their names end in
 * ".scr", have at most 96 characters of A-Z, a-z, 0-9, "-", "_" and ".", and do not begin with ".".
 *
 * OPEN_E_PARAM: the text is no name of a script. OPEN_E_NOT_FOUND: there is no such script. */
#ifndef OPENAPI_SCRIPT_H
#define OPENAPI_SCRIPT_H

#include "platform/api/openapi_common.h"

#ifdef __cplusplus
extern "C" {
#endif

enum { OPEN_CLI_SCRIPT_FILENAME_SIZE = 97, OPEN_CLI_SCRIPT_FILES_MAX = 100 };

/* Ends with a NUL. */
typedef char OPEN_CLI_SCRIPT_FILENAME_t[OPEN_CLI_SCRIPT_FILENAME_SIZE];

typedef struct OPEN_CLI_SCRIPT_LIST_s {
  uint32_t count;
  OPEN_CLI_SCRIPT_FILENAME_t filelist[OPEN_CLI_SCRIPT_FILES_MAX];
} OPEN_CLI_SCRIPT_FILE_LIST_t;

/* All scripts, in the order of their names.
 * OPEN_E_FAIL     the folder cannot be read */
open_error_t rpcclt_openapiTxtCfgFilesListGet(openapiClientHandle_t *handle,
                                              struct OPEN_CLI_SCRIPT_LIST_s *list);
/* Checks a script whole, then applies all of its lines as one change. Which line was wrong, and why, is in
 * the log.
 * OPEN_E_FAIL     a line is wrong, or the change cannot be stored; nothing has been changed */
open_error_t rpcclt_openapiTxtCfgValidateAndApply(openapiClientHandle_t *handle, open_buffdesc *name);
/* OPEN_E_FAIL     the file cannot be removed */
open_error_t rpcclt_openapiTxtCfgFileDelete(openapiClientHandle_t *handle, open_buffdesc *name);

#ifdef __cplusplus
}
#endif
#endif
