#include "tvutil2/platform/resource/image.h"

#include "tvutil2/platform/base/wide_text.h"

#include <cstring>

namespace tvutil2 {
namespace {

// A walk over bytes that never leaves them.
class Reader {
  public:
    explicit Reader(std::span<const std::byte> bytes) : m_bytes(bytes) {}

    [[nodiscard]] bool at_end() const { return m_position == m_bytes.size(); }
    [[nodiscard]] std::size_t position() const { return m_position; }

    template <class T>
    [[nodiscard]] bool read(T& value) {
        if (m_bytes.size() - m_position < sizeof(T)) return false;
        std::memcpy(&value, m_bytes.data() + m_position, sizeof(T));
        m_position += sizeof(T);
        return true;
    }

    [[nodiscard]] bool take(std::size_t size, std::span<const std::byte>& bytes) {
        if (m_bytes.size() - m_position < size) return false;
        bytes = m_bytes.subspan(m_position, size);
        m_position += size;
        return true;
    }

    // The last resource's padding may be missing.
    void align() {
        m_position += -m_position & 3U;
        if (m_position > m_bytes.size()) m_position = m_bytes.size();
    }

    [[nodiscard]] bool read(ResourceName& name) {
        constexpr WORD kNumber = 0xFFFF;
        const auto start = m_position;
        WORD unit = 0;
        if (!read(unit)) return false;
        if (unit == kNumber) return read(name.id);
        while (unit != 0) {
            if (!read(unit)) return false;
        }
        name.text = {reinterpret_cast<const char16_t*>(m_bytes.data() + start),
                     (m_position - start) / sizeof unit - 1};
        return true;
    }

  private:
    std::span<const std::byte> m_bytes;
    std::size_t m_position = 0;
};

bool read_header(std::span<const std::byte> bytes, Resource& resource) {
    Reader reader(bytes);
    DWORD data_size = 0, header_size = 0, data_version = 0, version = 0, characteristics = 0;
    WORD flags = 0;
    if (!reader.read(data_size) || !reader.read(header_size) || !reader.read(resource.type) ||
        !reader.read(resource.name)) {
        return false;
    }
    reader.align();
    return reader.read(data_version) && reader.read(flags) && reader.read(resource.language) &&
           reader.read(version) && reader.read(characteristics) && reader.at_end();
}

bool read_resource(Reader& reader, Resource& resource) {
    Reader ahead = reader;
    DWORD data_size = 0, header_size = 0;
    std::span<const std::byte> header;
    if (!ahead.read(data_size) || !ahead.read(header_size) || header_size % 4 != 0 ||
        !reader.take(header_size, header) || !read_header(header, resource) ||
        !reader.take(data_size, resource.data)) {
        return false;
    }
    reader.align();
    return true;
}

bool is_marker(const Resource& resource) {
    return resource.data.empty() && resource.type.text.empty() && resource.type.id == 0 &&
           resource.name.text.empty() && resource.name.id == 0;
}

}  // namespace

int compare(const ResourceName& a, const ResourceName& b) {
    if (a.text.empty() || b.text.empty()) {
        if (a.text.empty() != b.text.empty()) return a.text.empty() ? 1 : -1;
        return int{a.id} - int{b.id};
    }
    for (std::size_t i = 0; i < a.text.size() && i < b.text.size(); ++i) {
        const int difference = int{to_upper(a.text[i])} - int{to_upper(b.text[i])};
        if (difference != 0) return difference;
    }
    if (a.text.size() == b.text.size()) return 0;
    return a.text.size() < b.text.size() ? -1 : 1;
}

std::optional<std::vector<Resource>> read_image(std::span<const std::byte> image) {
    Reader reader(image);
    Resource marker;
    if (!read_resource(reader, marker) || !is_marker(marker)) return std::nullopt;
    std::vector<Resource> resources;
    while (!reader.at_end()) {
        if (!read_resource(reader, resources.emplace_back())) return std::nullopt;
    }
    return resources;
}

}  // namespace tvutil2
