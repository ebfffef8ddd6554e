// The way of a report to the maker.
#pragma once

#include <filesystem>
#include <string>

namespace crash {

struct Upload {
    std::string address;  ///< http or https
    std::string name;     ///< the report's
    std::string application;
    std::string version;
    std::filesystem::path archive;
};

struct Answer {
    bool is_accepted = false;
    bool has_come = false;  ///< from the server, whatever it says
    std::string failure;    ///< why it isn't accepted
};

/// Posts a form (multipart/form-data, RFC 7578) with the texts "name", "application" and "version"
/// and the archive as the file "report". A status of 200 to 299 accepts it; a redirection doesn't.
/// Proxies are the environment's. A minute at the longest.
[[nodiscard]] Answer upload(const Upload& what);

}  // namespace crash
