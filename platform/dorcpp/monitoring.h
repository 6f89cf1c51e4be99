// Telling the monitor.
#pragma once

#include <dorcpp/monitor.h>

namespace DorCPP {

// Whether a monitor is set.
bool isMonitored();
void tellMonitor(const MonitorRecord& record) noexcept;

} // namespace DorCPP
