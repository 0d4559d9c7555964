/* What goes to standard output: data and nothing else. */
#ifndef KESTREL_TOOLS_KESTRELCTL_OUTPUT_H
#define KESTREL_TOOLS_KESTRELCTL_OUTPUT_H

#include "tools/kestrelctl/answer.h"

#include <string>

/* The functions return false when the text could not be written; lost_output() then says why. */
bool print_text(const std::string &text);
/* A document of the switch, byte for byte; on a terminal with what would command it escaped. */
bool print_document(const std::string &document);
/* The data of an answer for people; *anything tells whether there was any. */
bool print_answer(const answer &result, bool *anything);

std::string lost_output();

#endif
