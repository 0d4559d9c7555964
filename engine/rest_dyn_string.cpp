#include "engine/rest_dyn_string.h"

#include <limits.h>
#include <stdlib.h>
#include <string.h>

static const int GROWTH = 1024; /* bytes added beyond what is needed right now */

dyn_string_t *dynStringNew(void) {
  dyn_string_t *str = static_cast<dyn_string_t *>(malloc(sizeof *str));
  if (str == nullptr) return nullptr;
  *str = {static_cast<char *>(malloc(GROWTH)), GROWTH, 0};
  if (str->text == nullptr) {
    free(str);
    return nullptr;
  }
  str->text[0] = '\0';
  return str;
}

DYN_STRING_RC_t dynStringReserve(dyn_string_t *pStr, int extra) {
  if (pStr == nullptr || extra < 0 || extra > INT_MAX - GROWTH - pStr->capacity) return DYN_STRING_RC_FALSE;
  if (extra < pStr->capacity - pStr->length) return DYN_STRING_RC_TRUE;
  int capacity = pStr->capacity + extra + GROWTH;
  char *text = static_cast<char *>(realloc(pStr->text, capacity));
  if (text == nullptr) return DYN_STRING_RC_FALSE;
  pStr->text = text;
  pStr->capacity = capacity;
  return DYN_STRING_RC_TRUE;
}

DYN_STRING_RC_t dynStringAppendN(dyn_string_t *pStr, const char *add, int length) {
  if (add == nullptr || dynStringReserve(pStr, length) != DYN_STRING_RC_TRUE) return DYN_STRING_RC_FALSE;
  memcpy(pStr->text + pStr->length, add, length);
  pStr->length += length;
  pStr->text[pStr->length] = '\0';
  return DYN_STRING_RC_TRUE;
}

DYN_STRING_RC_t dynStringAppend(dyn_string_t *pStr, const char *pAddStr) {
  if (pAddStr == nullptr || strlen(pAddStr) > INT_MAX) return DYN_STRING_RC_FALSE;
  return dynStringAppendN(pStr, pAddStr, static_cast<int>(strlen(pAddStr)));
}

void dynStringFree(dyn_string_t **pStr) {
  if (pStr == nullptr || *pStr == nullptr) return;
  free((*pStr)->text);
  free(*pStr);
  *pStr = nullptr;
}
