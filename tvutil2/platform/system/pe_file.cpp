// Structures: "PE Format", the published description of portable executables.
#include "tvutil2/platform/system/pe_file.h"

#include "tvutil2/platform/base/last_error.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace tvutil2 {
namespace {

constexpr std::uint32_t kResourceDirectory = 2;
constexpr std::uint32_t kSubDirectory = 0x80000000;
constexpr std::uint32_t kHasText = 0x80000000;

// A module with more resources of a type, or of a name, is none of ours.
constexpr std::uint32_t kMostEntries = 0x4000;

struct DirectoryHeader {
    std::uint32_t flags, time;
    std::uint16_t major, minor, named_entries, numbered_entries;
};

struct DirectoryEntry {
    std::uint32_t name, offset;
};

struct DataEntry {
    std::uint32_t address, size, code_page, reserved;
};

class PeFile {
  public:
    explicit PeFile(const FileBytes& file) : m_file(file) {}

    // False for what is no such file.
    bool read_headers();
    [[nodiscard]] bool has_resources() const { return m_resources.has_value(); }

    // The entry of a directory at an offset from the first one: of a number, or the first of all.
    [[nodiscard]] std::optional<DirectoryEntry> find(std::uint32_t directory,
                                                     std::optional<WORD> number) const;
    /// All entries of a directory, up to kMostEntries.
    [[nodiscard]] std::optional<std::vector<DirectoryEntry>> entries(std::uint32_t directory) const;
    /// `text` holds the name's text, if it has one.
    [[nodiscard]] std::optional<ResourceName> name_of(const DirectoryEntry& entry,
                                                      std::u16string& text) const;
    [[nodiscard]] std::optional<std::vector<std::byte>> data(std::uint32_t entry,
                                                             std::size_t most) const;

  private:
    // Where an address of the loaded image lies in the file, and how many bytes of its section
    // follow there.
    struct Place {
        std::uint64_t offset;
        std::uint32_t size;
    };
    [[nodiscard]] std::optional<Place> place_of(std::uint32_t address) const;

    const FileBytes& m_file;
    std::vector<PeSection> m_sections;
    std::optional<std::uint64_t> m_resources;  // file offset of the first directory
};

bool PeFile::read_headers() {
    auto headers = read_pe_headers(m_file);
    if (!headers) return false;
    m_sections = std::move(headers->sections);
    const auto entry = headers->directory(kResourceDirectory);
    if (!entry) return true;
    const auto address = m_file.at<std::uint32_t>(*entry);
    if (!address) return false;
    if (*address == 0) return true;
    const auto place = place_of(*address);
    if (!place) return false;
    m_resources = place->offset;
    return true;
}

std::optional<PeFile::Place> PeFile::place_of(std::uint32_t address) const {
    for (const auto& section : m_sections) {
        if (address < section.address || address - section.address >= section.raw_size) continue;
        const auto inside = address - section.address;
        return Place{std::uint64_t{section.raw_offset} + inside, section.raw_size - inside};
    }
    return std::nullopt;
}

std::optional<DirectoryEntry> PeFile::find(std::uint32_t directory,
                                           std::optional<WORD> number) const {
    const auto start = *m_resources + directory;
    const auto header = m_file.at<DirectoryHeader>(start);
    if (!header) return std::nullopt;
    // Entries with a name come first, then those with a number.
    std::uint32_t next = number ? header->named_entries : 0;
    const auto end = std::uint32_t{header->named_entries} + header->numbered_entries;
    std::array<DirectoryEntry, 64> block;
    while (next < end) {
        const auto count = std::min<std::size_t>(block.size(), end - next);
        const auto entries = std::span(block).first(count);
        if (!m_file.read(start + sizeof(DirectoryHeader) + next * sizeof(DirectoryEntry),
                         std::as_writable_bytes(entries))) {
            return std::nullopt;
        }
        const auto found = std::find_if(
            entries.begin(), entries.end(),
            [number](const DirectoryEntry& entry) { return !number || entry.name == *number; });
        if (found != entries.end()) return *found;
        next += static_cast<std::uint32_t>(count);
    }
    return std::nullopt;
}

std::optional<std::vector<DirectoryEntry>> PeFile::entries(std::uint32_t directory) const {
    const auto start = *m_resources + directory;
    const auto header = m_file.at<DirectoryHeader>(start);
    if (!header) return std::nullopt;
    const auto count = std::uint32_t{header->named_entries} + header->numbered_entries;
    const auto first = start + sizeof(DirectoryHeader);
    if (count > kMostEntries || !m_file.holds(first, count * sizeof(DirectoryEntry))) {
        return std::nullopt;
    }
    std::vector<DirectoryEntry> entries(count);
    if (!m_file.read(first, std::as_writable_bytes(std::span(entries)))) return std::nullopt;
    return entries;
}

// A name's text is its length in units, and the units.
std::optional<ResourceName> PeFile::name_of(const DirectoryEntry& entry,
                                            std::u16string& text) const {
    if ((entry.name & kHasText) == 0) return ResourceName{{}, static_cast<WORD>(entry.name)};
    const auto place = *m_resources + (entry.name & ~kHasText);
    const auto length = m_file.at<std::uint16_t>(place);
    const auto units = place + sizeof(std::uint16_t);
    if (!length || !m_file.holds(units, *length * sizeof(char16_t))) return std::nullopt;
    text.assign(*length, u'\0');
    const bool is_there = m_file.read(units, std::as_writable_bytes(std::span(text)));
    return is_there ? std::optional(ResourceName{text, 0}) : std::nullopt;
}

std::optional<std::vector<std::byte>> PeFile::data(std::uint32_t entry, std::size_t most) const {
    const auto header = m_file.at<DataEntry>(*m_resources + entry);
    if (!header) return std::nullopt;
    const auto place = place_of(header->address);
    if (!place || header->size > place->size) return std::nullopt;
    const auto size = std::min<std::size_t>(header->size, most);
    if (!m_file.holds(place->offset, size)) return std::nullopt;
    std::vector<std::byte> bytes(size);
    if (!m_file.read(place->offset, bytes)) return std::nullopt;
    return bytes;
}

// Three levels, and never more: nothing can lead in a circle.
struct Visit {
    const PeFile& pe;
    const std::function<bool(const PeResource&)>& visit;

    [[nodiscard]] bool types() const {
        return each(kSubDirectory, [this](const DirectoryEntry& type) {
            std::u16string text;
            const auto name = pe.name_of(type, text);
            return name && names(type.offset, {*name, {}, 0, {}});
        });
    }

  private:
    [[nodiscard]] bool names(std::uint32_t directory, PeResource resource) const {
        return each(directory, [&](const DirectoryEntry& entry) {
            std::u16string text;
            const auto name = pe.name_of(entry, text);
            if (!name) return false;
            resource.name = *name;
            return languages(entry.offset, resource);
        });
    }

    [[nodiscard]] bool languages(std::uint32_t directory, PeResource& resource) const {
        return each(directory, [&](const DirectoryEntry& language) {
            if (((language.offset | language.name) & kSubDirectory) != 0) return false;
            auto data = pe.data(language.offset, SIZE_MAX);
            if (!data) return false;
            resource.language = static_cast<WORD>(language.name);
            resource.data = std::move(*data);
            return visit(resource);
        });
    }

    template <class Use>
    [[nodiscard]] bool each(std::uint32_t directory, Use use) const {
        if ((directory & kSubDirectory) == 0) return false;
        const auto entries = pe.entries(directory & ~kSubDirectory);
        return entries && std::all_of(entries->begin(), entries->end(), use);
    }
};

}  // namespace

std::optional<std::vector<std::byte>> pe_resource(const FileBytes& file, WORD type, WORD name,
                                                  std::size_t most) {
    const auto fail = [](DWORD error) {
        SetLastError(error);
        return std::nullopt;
    };
    PeFile pe(file);
    if (!pe.read_headers()) return fail(ERROR_BAD_EXE_FORMAT);
    if (!pe.has_resources()) return fail(ERROR_RESOURCE_DATA_NOT_FOUND);
    // Three levels, type, name and language, and never more: nothing can lead in a circle.
    const auto names = pe.find(0, type);
    if (!names) return fail(ERROR_RESOURCE_TYPE_NOT_FOUND);
    if ((names->offset & kSubDirectory) == 0) return fail(ERROR_BAD_EXE_FORMAT);
    const auto languages = pe.find(names->offset & ~kSubDirectory, name);
    if (!languages) return fail(ERROR_RESOURCE_NAME_NOT_FOUND);
    if ((languages->offset & kSubDirectory) == 0) return fail(ERROR_BAD_EXE_FORMAT);
    const auto language = pe.find(languages->offset & ~kSubDirectory, std::nullopt);
    if (!language || (language->offset & kSubDirectory) != 0) return fail(ERROR_BAD_EXE_FORMAT);
    auto data = pe.data(language->offset, most);
    if (!data) return fail(ERROR_BAD_EXE_FORMAT);
    return data;
}

bool visit_pe_resources(const FileBytes& file,
                        const std::function<bool(const PeResource&)>& visit) {
    PeFile pe(file);
    if (!pe.read_headers()) return fail_with(ERROR_BAD_EXE_FORMAT);
    if (!pe.has_resources()) return true;
    const Visit visit_below{pe, visit};
    return visit_below.types() || fail_with(ERROR_BAD_EXE_FORMAT);
}

}  // namespace tvutil2
