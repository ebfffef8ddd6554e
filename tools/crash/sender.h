// Sends reports that wait.
#pragma once

#include <string>
#include <vector>

#include "tools/crash/reports_folder.h"

namespace crash {

struct Outcome {
    std::string name;
    std::string failure;  ///< empty: it was sent
};

/// Sends the named reports, or all that weren't sent yet, to `address` or, when that is empty, to
/// the address that each names. What isn't accepted stays as it was. The turn to send is the
/// caller's.
std::vector<Outcome> send_reports(const ReportsFolder& reports, const std::string& address,
                                  std::vector<std::string> names);

}  // namespace crash
