// Reading the log's files, which others are writing.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace tool {

/// A log's file that grows: hands out its lines as they become whole, without their line ends. A
/// file that is moved away, replaced or cut is read from its start again.
class GrowingLog {
  public:
    /// Sees a line; false ends the reading.
    using See = std::function<bool(std::u16string_view line)>;

    /// A host path. The file needn't be there yet, its folder must be; Failure when it isn't.
    explicit GrowingLog(std::string path);
    ~GrowingLog();
    GrowingLog(const GrowingLog&) = delete;
    GrowingLog& operator=(const GrowingLog&) = delete;

    /// Passes over what is in the file now.
    void skip();
    /// What is whole by now; false when `see` ended it.
    bool read(const See& see);
    /// Until something happens in the folder; Failure when it goes away.
    void wait();

  private:
    std::string next_block();

    std::string m_path;
    int m_changes = -1;
    std::uint64_t m_device = 0;
    std::uint64_t m_inode = 0;
    std::uint64_t m_offset = 0;
    std::u16string m_started;  // a line whose end isn't there yet
};

}  // namespace tool
