/* Growable text, used to print result trees and help pages. */
#ifndef KESTREL_ENGINE_REST_DYN_STRING_H
#define KESTREL_ENGINE_REST_DYN_STRING_H

/* The one result type of the engine in which 1 means success. */
typedef enum { DYN_STRING_RC_FALSE = 0, DYN_STRING_RC_TRUE = 1 } DYN_STRING_RC_t;

typedef struct {
  char *text;   /* always terminated */
  int capacity; /* bytes allocated, the terminator's among them */
  int length;   /* characters */
} dyn_string_t;

/* An empty text with room for 1023 characters; null when memory is exhausted. */
dyn_string_t *dynStringNew(void);
/* Appends a text. When it does not fit the buffer grows by its length plus 1024 bytes. Fails, leaving the
 * text as it was, for a null argument, when memory is exhausted or beyond 2 GiB. */
DYN_STRING_RC_t dynStringAppend(dyn_string_t *pStr, const char *pAddStr);
/* The same for the first `length` characters of `add`, which holds no terminator among them. */
DYN_STRING_RC_t dynStringAppendN(dyn_string_t *pStr, const char *add, int length);
/* Makes room for `extra` more characters at once. Fails like dynStringAppend(). */
DYN_STRING_RC_t dynStringReserve(dyn_string_t *pStr, int extra);
/* Frees the text and sets the caller's pointer to null. */
void dynStringFree(dyn_string_t **pStr);

#endif
