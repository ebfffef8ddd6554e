// Shortcuts: an object with the fields of a link, kept in a file in the form of a desktop entry.
//
// The file is a Desktop Entry (freedesktop.org, version 1.5) of type Application, so that a file
// manager can show and start it when its name ends in ".desktop". The fields proper are in keys of
// their own (X-Tvutil-...) and survive exactly, whatever the text; loading reads only those.
#pragma once

#include "tvutil2/platform/base/com.h"

#include <optional>
#include <string>

struct WIN32_FIND_DATAW;

inline constexpr CLSID CLSID_ShellLink{0x00021401, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IShellLinkW{0x000214F9, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IPersistFile{0x0000010B, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

inline constexpr DWORD SLR_NO_UI = 0x1;
inline constexpr DWORD SLR_UPDATE = 0x4;
/// SLR_NO_UI is part of it.
inline constexpr DWORD SLR_NO_UI_WITH_MSG_PUMP = 0x101;
inline constexpr DWORD SLGP_RAWPATH = 0x4;
inline constexpr DWORD STGM_READ = 0;

/// The fields. Text is cut to the caller's buffer, zero included. A null text sets an empty one.
/// An object belongs to one thread at a time.
class IShellLinkW : public IUnknown {
  public:
    /// S_FALSE, and empty text, when no path is set. `data`, if not null, is filled as a search
    /// would, or zeroed when the target is missing.
    virtual HRESULT GetPath(char16_t* path, int size, WIN32_FIND_DATAW* data, DWORD flags) = 0;
    virtual HRESULT SetPath(const char16_t* path) = 0;
    virtual HRESULT GetDescription(char16_t* text, int size) = 0;
    virtual HRESULT SetDescription(const char16_t* text) = 0;
    virtual HRESULT GetArguments(char16_t* text, int size) = 0;
    virtual HRESULT SetArguments(const char16_t* text) = 0;
    virtual HRESULT GetHotkey(WORD* key) = 0;
    virtual HRESULT SetHotkey(WORD key) = 0;
    virtual HRESULT GetIconLocation(char16_t* path, int size, int* index) = 0;
    virtual HRESULT SetIconLocation(const char16_t* path, int index) = 0;
    /// S_OK when the target exists; otherwise the HRESULT of ERROR_FILE_NOT_FOUND or
    /// ERROR_PATH_NOT_FOUND. A lost target isn't looked for elsewhere and nothing is shown, so the
    /// window and the flags make no difference.
    virtual HRESULT Resolve(HWND window, DWORD flags) = 0;

  protected:
    ~IShellLinkW() = default;
};

/// The same object as a file.
class IPersistFile : public IUnknown {
  public:
    /// Reads the fields; on failure they stay. The HRESULT of ERROR_FILE_NOT_FOUND and its kin, or
    /// of ERROR_BAD_FORMAT for a file that isn't a link or is longer than 1 MiB.
    virtual HRESULT Load(const char16_t* path, DWORD mode) = 0;
    /// Writes the file as a whole or not at all. Null means the file of the last Load, or of the
    /// last Save with `remember`. E_FAIL when there is none.
    virtual HRESULT Save(const char16_t* path, BOOL remember) = 0;

  protected:
    ~IPersistFile() = default;
};

namespace tvutil2 {

/// What a file is a shortcut to, whether or not it is there; nothing for another file.
[[nodiscard]] std::optional<std::u16string> link_target(const std::u16string& path);

}  // namespace tvutil2
