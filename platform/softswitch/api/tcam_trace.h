/* The record of a TCAM policy as the trace of platform calls shows it. */
#ifndef KESTREL_SOFTSWITCH_API_TCAM_TRACE_H
#define KESTREL_SOFTSWITCH_API_TCAM_TRACE_H

#include <string>

namespace softswitch {

/* The members of an open_tcamApiPolicy_t that are not zero, as they were passed:
 * "{policyType=1 matchDstIp=10.0.0.1 ...}". */
std::string tcam_record_trace(const void *policy);

} // namespace softswitch

#endif
