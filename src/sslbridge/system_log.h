// Where the companion's log goes: standard error and the system log.
#pragma once

namespace brindle::sslbridge {

// Installs the log sink for the companion program (ident "SslBridge").
void InstallSystemLog();

}  // namespace brindle::sslbridge
