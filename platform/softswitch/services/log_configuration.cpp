/* Telling the log service its configuration; see log_configuration.h. */
#include "platform/softswitch/services/log_configuration.h"

#include "platform/softswitch/services/log.h"
#include "platform/softswitch/services/syslog.h"

namespace softswitch {

void log_configure(const logging_table &logging, const std::string &hostname) {
  log_configure_console(logging.console, static_cast<int>(logging.console_severity));
  syslog_settings settings;
  settings.hostname = hostname;
  for (const auto &[address, host] : logging.hosts) {
    uint16_t port = static_cast<uint16_t>(logging_host_port(logging, host));
    if (logging.syslog) settings.hosts.push_back({address, port, static_cast<int>(host.severity)});
  }
  syslog_configure(settings);
}

} // namespace softswitch
