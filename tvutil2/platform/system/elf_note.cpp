#include "tvutil2/platform/system/elf_note.h"

#include "tvutil2/platform/base/last_error.h"

#include <elf.h>

#include <algorithm>
#include <string_view>
#include <vector>

namespace tvutil2 {
namespace {

constexpr std::string_view kOwner("tvutil2\0", 8);
constexpr std::uint32_t kVersionNote = 1;
// Beyond these a file is taken for damaged: real ones have a dozen segments, and a few hundred
// bytes of notes.
constexpr unsigned kMostSegments = 1024;
constexpr std::uint64_t kLongestNotes = std::uint64_t{1} << 20;

struct NoteHeader {
    std::uint32_t owner_size, size, type;
};

std::uint64_t padded(std::uint64_t size, std::uint64_t alignment) {
    return (size + alignment - 1) / alignment * alignment;
}

// The note among those of a segment, which are each padded to its alignment.
std::optional<VersionNumbers> version_among(std::span<const std::byte> notes,
                                            std::uint64_t alignment) {
    const MemoryBytes bytes(notes);
    std::uint64_t at = 0;
    while (const auto note = bytes.at<NoteHeader>(at)) {
        const auto owner_at = at + sizeof(NoteHeader);
        const auto content_at = at + padded(sizeof(NoteHeader) + note->owner_size, alignment);
        std::array<char, kOwner.size()> owner{};
        if (note->type == kVersionNote && note->owner_size == kOwner.size() &&
            note->size == sizeof(VersionNumbers) &&
            bytes.read(owner_at, std::as_writable_bytes(std::span(owner))) &&
            std::string_view(owner.data(), owner.size()) == kOwner) {
            return bytes.at<VersionNumbers>(content_at);
        }
        at = content_at + padded(note->size, alignment);
    }
    return std::nullopt;
}

template <class Header, class Segment>
std::optional<VersionNumbers> version_in(const FileBytes& file) {
    const auto fail = [](DWORD error) {
        SetLastError(error);
        return std::nullopt;
    };
    const auto header = file.at<Header>(0);
    if (!header || header->e_phentsize != sizeof(Segment) || header->e_phnum > kMostSegments) {
        return fail(ERROR_BAD_EXE_FORMAT);
    }
    std::vector<Segment> segments(header->e_phnum);
    if (!file.read(header->e_phoff, std::as_writable_bytes(std::span(segments)))) {
        return fail(ERROR_BAD_EXE_FORMAT);
    }
    for (const auto& segment : segments) {
        if (segment.p_type != PT_NOTE) continue;
        if (segment.p_filesz > kLongestNotes) return fail(ERROR_BAD_EXE_FORMAT);
        std::vector<std::byte> notes(segment.p_filesz);
        if (!file.read(segment.p_offset, notes)) return fail(ERROR_BAD_EXE_FORMAT);
        constexpr std::uint64_t kWide = 8;
        if (const auto version = version_among(notes, segment.p_align == kWide ? kWide : 4)) {
            return version;
        }
    }
    return fail(ERROR_RESOURCE_TYPE_NOT_FOUND);
}

}  // namespace

bool is_elf_file(const FileBytes& file) {
    const auto mark = file.at<std::array<char, SELFMAG>>(0);
    return mark && std::string_view(mark->data(), SELFMAG) == ELFMAG;
}

std::optional<VersionNumbers> elf_version(const FileBytes& file) {
    const auto identity = file.at<std::array<unsigned char, EI_NIDENT>>(0);
    if (is_elf_file(file) && identity && (*identity)[EI_DATA] == ELFDATA2LSB) {
        if ((*identity)[EI_CLASS] == ELFCLASS64) return version_in<Elf64_Ehdr, Elf64_Phdr>(file);
        if ((*identity)[EI_CLASS] == ELFCLASS32) return version_in<Elf32_Ehdr, Elf32_Phdr>(file);
    }
    SetLastError(ERROR_BAD_EXE_FORMAT);
    return std::nullopt;
}

}  // namespace tvutil2
