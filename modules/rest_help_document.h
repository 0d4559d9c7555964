/* The help document: the text that describes every module, its APIs and their parameters, and its parser. The
 * text is put together by the build from modules/help, whose README.md gives the grammar.
 *
 * The tree that the parser makes of it:
 *
 *   modules
 *     module (key "1", "2", ... in the order of the text)
 *       module_name, module_desc
 *       apis
 *         api (key "1", "2", ...)
 *           api_name, api_desc, api_uri, api_method
 *           parameters
 *             param (key "1", "2", ...): param_name, param_desc
 *
 * A line that should hold a value but does not leaves that value out. */
#ifndef KESTREL_MODULES_REST_HELP_DOCUMENT_H
#define KESTREL_MODULES_REST_HELP_DOCUMENT_H

#include "engine/rest_tree_obj.h"
#include "engine/rest_util.h"

extern const char restGlobalHelpDocText[];

enum {
  HELP_LINE_SIZE = 16384,    /* a line of the compiled-in text, with its terminator */
  HELP_FILE_LINE_SIZE = 256, /* the same of a document in a file; longer lines are read in pieces */
};
inline constexpr const char *HELP_DOCUMENT_FILE = "/mnt/flash/user-apps/help_doc";

/* Parses the compiled-in text. Returns the tree, which the caller frees; null when memory is exhausted. */
node_t *parse_help_doc_text_to_tree_obj(void);
/* Hands out the next line of the text being parsed, with its newline, cut to size - 1 characters. RC_FALSE at
 * the end of the text (a last line without a newline is not handed out), and when nothing is being parsed. */
RC_t parse_help_doc_text_to_tree_obj_subfunc_get_new_line(char *line, int size);

/* The same for any text, and for a document in a file. A file that cannot be opened is logged (WARNING) and
 * yields null. */
node_t *parse_help_doc_to_tree_obj(const char *text);
node_t *parse_help_doc_file_to_tree_obj(const char *path);

#endif
