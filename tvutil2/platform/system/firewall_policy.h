// The firewall's policy and its rules, as objects over what the registry holds of them.
//
// Below HKLM\SYSTEM\CurrentControlSet\Services\SharedAccess\Parameters\FirewallPolicy:
//     DomainProfile, StandardProfile (private), PublicProfile   value "EnableFirewall" (REG_DWORD)
//     FirewallRules                                             a value (REG_SZ) for each rule
// A profile's firewall is on only where that value says so. The profiles in force are those of the
// networks that the machine is on: "Category" (REG_DWORD; 0 public, 1 private, 2 domain) of each
// key below HKLM\SOFTWARE\Microsoft\Windows NT\CurrentVersion\NetworkList\Profiles; public alone
// when there is none.
//
// The objects show the moment at which they were asked for. Everything but a failing registry gives
// S_OK; that gives the HRESULT of its error.
#pragma once

#include "tvutil2/platform/base/variant.h"
#include "tvutil2/platform/system/firewall_rule.h"

inline constexpr CLSID CLSID_NetFwPolicy2{
    0xE2B3C97F, 0x6AE1, 0x41AC, {0x81, 0x7A, 0xF6, 0xF9, 0x21, 0x66, 0xD7, 0xDD}};
inline constexpr CLSID CLSID_NetFwRule{
    0x2C5BC43E, 0x3369, 0x4C33, {0xAB, 0x0C, 0xBE, 0x94, 0x69, 0x67, 0x7A, 0xF4}};
inline constexpr IID IID_INetFwPolicy2{
    0x98325047, 0xC671, 0x4174, {0x8D, 0x81, 0xDE, 0xFC, 0xD3, 0xF0, 0x31, 0x86}};
inline constexpr IID IID_INetFwRule{
    0xAF230D27, 0xBABA, 0x4E42, {0xAC, 0xED, 0xF5, 0x24, 0xF2, 0x2C, 0xFC, 0xE2}};
inline constexpr IID IID_INetFwRules{
    0x9C4C6277, 0x5027, 0x441E, {0xAF, 0xAE, 0xCA, 0x1F, 0x54, 0x2D, 0xA0, 0x09}};

/// A rule. Texts are the caller's to free, and null when empty.
class INetFwRule : public IDispatch {
  public:
    virtual HRESULT get_Name(BSTR* name) = 0;
    virtual HRESULT get_ApplicationName(BSTR* path) = 0;
    virtual HRESULT get_Protocol(LONG* protocol) = 0;
    virtual HRESULT get_Direction(LONG* direction) = 0;
    virtual HRESULT get_Enabled(VARIANT_BOOL* enabled) = 0;
    virtual HRESULT get_Profiles(LONG* profiles) = 0;
    virtual HRESULT get_Action(LONG* action) = 0;

  protected:
    ~INetFwRule() = default;
};

/// All rules whose text is sound, in the order of their values' names.
class INetFwRules : public IDispatch {
  public:
    virtual HRESULT get_Count(LONG* count) = 0;
    /// An IEnumVARIANT, whose values are rules (VT_DISPATCH).
    virtual HRESULT get__NewEnum(IUnknown** walk) = 0;

  protected:
    ~INetFwRules() = default;
};

class INetFwPolicy2 : public IDispatch {
  public:
    virtual HRESULT get_CurrentProfileTypes(LONG* profiles) = 0;
    /// E_INVALIDARG for what isn't one profile.
    virtual HRESULT get_FirewallEnabled(LONG profile, VARIANT_BOOL* enabled) = 0;
    virtual HRESULT get_Rules(INetFwRules** rules) = 0;

  protected:
    ~INetFwPolicy2() = default;
};
