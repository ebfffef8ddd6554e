// Writes the report of a crash.
#pragma once

#include "tvutil2/platform/crash/crash_note.h"

#include <span>
#include <string>

#include "tools/crash/reports_folder.h"

namespace crash {

struct Product {
    std::string application;
    std::string version;
    std::string url;      ///< where reports go; may be empty
    std::string program;  ///< host path of the executable
};

/// Looks at the crashed process and leaves the report with its archive; false, and nothing is left,
/// when it can't. `files` are pairs: a host path, and a description.
bool write_report(const ReportsFolder& reports, const tvutil2::CrashNote& note,
                  const Product& product, std::span<char*> files);

}  // namespace crash
