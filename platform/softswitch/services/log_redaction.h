/* Keeps what is secret of URLs out of the log: between "ftp://" and "@host/file", and behind "/file?", it has
 * "****" in its place. Works on texts that hold URLs as they are and on such as quote the query of a request,
 * in which any character of a URL may be percent-encoded (RFC 3986 section 2.1). */
#ifndef KESTREL_SOFTSWITCH_LOG_REDACTION_H
#define KESTREL_SOFTSWITCH_LOG_REDACTION_H

#include <cstddef>
#include <string>
#include <string_view>

namespace softswitch {

/* A text of this many bytes may have been cut by who wrote it, behind a user name and before the "@". */
inline constexpr size_t log_text_maybe_cut = size_t{16} * 1024 - 1;

/* Appends a text to a line, with "****" in the place of what stands between "://" (or a percent-encoded form
 * of it) and the last "@" or "%40" of the URL, and of its query and fragment. As a password may hold
 * anything, the URL is taken to reach as far as it possibly can: to the end of the text, or, when its "://"
 * is encoded, to the next blank or "&", which in it are encoded as well; a query reaches to the next of these
 * in any case. Rather too much is hidden than too little. */
void append_redacted(std::string *line, std::string_view text);

} // namespace softswitch

#endif
