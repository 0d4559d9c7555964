/* File transfers between the switch and a server, by URL: tftp, ftp, ftps, http, https, scp, sftp. They run
 * in the background, one at a time. */
#ifndef OPENAPI_TRANSFER_H
#define OPENAPI_TRANSFER_H

#include "platform/api/openapi_common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* How the current or latest transfer stands. */
typedef uint32_t OPEN_TRANSFER_CODE_t;
enum {
  OPEN_TRANSFER_NONE = 0,            /* there was none since the switch came up */
  OPEN_TRANSFER_STARTING = 1,        /* no data has moved so far */
  OPEN_TRANSFER_RUNNING = 2,         /* data is moving */
  OPEN_TRANSFER_CHECKING = 3,        /* all is there and is being checked and stored */
  OPEN_TRANSFER_UNREACHABLE = 4,     /* the server cannot be found or does not answer */
  OPEN_TRANSFER_NOT_TRUSTED = 5,     /* its certificate or host key is not trusted */
  OPEN_TRANSFER_ACCESS_DENIED = 6,   /* it refuses user, password or access */
  OPEN_TRANSFER_NO_FILE = 7,         /* it has no such file */
  OPEN_TRANSFER_TIMED_OUT = 8,       /* the connection was made, but no data moves */
  OPEN_TRANSFER_CUT = 9,             /* the connection ended before the file did */
  OPEN_TRANSFER_TOO_LARGE = 10,      /* the file is larger than its kind may be */
  OPEN_TRANSFER_BAD_CONTENT = 11,    /* the file is not what it should be; why is in the log */
  OPEN_TRANSFER_DONE = 12,           /* finished, checked and stored */
  OPEN_TRANSFER_STORAGE_FAILED = 13, /* the switch cannot store the file */
  OPEN_TRANSFER_CANCELLED = 14,      /* the switch was reloaded meanwhile */
  OPEN_TRANSFER_FAILED = 15          /* any other failure */
};

/* Starts fetching a file. What was there before stays until the new one is complete and checked.
 *   url      1..1023 characters; may hold user and password, which no log shows
 *   target   "active" or "backup", a software image;
 *            "startup-config" or "backup-config", a configuration that must apply to a switch in factory
 *            state; or the name of a script (openapi_script.h), whose lines must be lines of the
 *            configuration language
 * OPEN_E_PARAM    no URL of a known scheme, or no such target
 * OPEN_E_UNAVAIL  another transfer is in progress
 * OPEN_E_FULL     there is no room for another script
 * OPEN_E_ERROR    the transfer cannot be started */
open_error_t rpcclt_openapiTransferFileDownload(openapiClientHandle_t *handle, open_buffdesc *url,
                                                open_buffdesc *target);

/* Starts sending a file. HTTP servers get it by PUT.
 *   url      as above
 *   source   "startup-config", "backup-config", "running-config", "kestrel.cfg", an archive (tar) of all of
 *            these and the scripts, or the name of a script
 * OPEN_E_PARAM    no URL of a known scheme, or no such source
 * OPEN_E_UNAVAIL  another transfer is in progress
 * OPEN_E_ERROR    there is no such file, or the transfer cannot be started */
open_error_t rpcclt_openapiTransferFileUpload(openapiClientHandle_t *handle, open_buffdesc *url,
                                              open_buffdesc *source);

/* Lets the switch reload (openapi_system.h) once the current transfer is done, or now when it was the latest
 * and is done already. One that fails reloads nothing.
 * OPEN_E_FAIL     there was no transfer since the switch came up */
open_error_t rpcclt_openapiTransferCompletedRebootSet(openapiClientHandle_t *handle);

/* A sentence on the current or latest download, or upload. Fills `text` (give 256 bytes). */
open_error_t rpcclt_openapiTransferDownloadStatusGet(openapiClientHandle_t *handle, open_buffdesc *text);
open_error_t rpcclt_openapiTransferUploadStatusGet(openapiClientHandle_t *handle, open_buffdesc *text);
/* 0..100, of the current or latest transfer in either direction; 0 while the size is not known. */
open_error_t rpcclt_openapiTransferProgressGet(openapiClientHandle_t *handle, uint32_t *percent);
/* Whether a transfer is in progress. When one is, the call takes a moment (up to a tenth of a second, or to
 * the transfer's end), so that a caller may ask again and again at no cost. */
open_error_t rpcclt_openapiTransferInProgressGet(openapiClientHandle_t *handle, OPEN_BOOL_t *inProgress);
/*   unit     0
 * OPEN_E_PARAM    another unit */
open_error_t rpcclt_openapiTransferResultCodeGet(openapiClientHandle_t *handle, uint32_t unit,
                                                 OPEN_TRANSFER_CODE_t *code);

#ifdef __cplusplus
}
#endif
#endif
