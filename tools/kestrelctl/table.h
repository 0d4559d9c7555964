/* The data of an answer as text for people: a list becomes aligned columns, an object lines of name and
 * value, and what is nested in an object is indented below it. */
#ifndef KESTREL_TOOLS_KESTRELCTL_TABLE_H
#define KESTREL_TOOLS_KESTRELCTL_TABLE_H

#include <json-c/json.h>
#include <string>

/* The text of rlt_data, with a final line end; empty when there is nothing to show. The name of a single
 * member
 * ("vlans") is left out. With bold, the headings of columns are bold by escape sequences. */
std::string print_data(json_object *data, bool bold);

#endif
