#include "tvutil2/url/url_info.h"

#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/url/string_protection.h"
#include "tvutil2/url/url_text.h"

#include <string_view>

const char16_t* const kAuthMethodNames[6] = {u"Password", u"Public Key", u"Keyboard Interactive",
                                             u"GSSAPI",   u"PKCS11",     u"CAPI"};
const char16_t* const kKeySourceNames[4] = {u"USERKEY", u"PKCS11", u"CAPI", u"AGENT_ADD"};

namespace {

using View = std::u16string_view;

constexpr auto kNone = View::npos;
constexpr WORD kRdpPort = 3389;
constexpr char16_t kAuthMethod[] = u"AuthMethod";
constexpr char16_t kPublicKeyMethod[] = u"11";

bool is_key(const CString& key, View name) {
    return key.View().size() == name.size() && key.CompareNoCase(name.data()) == 0;
}

bool has_port(View text) {
    const auto colon = text.rfind(u':');
    if (colon == kNone) return false;
    const auto host = text.substr(0, colon);
    return (host.starts_with(u'[') && host.ends_with(u']')) || host.find(u':') == kNone;
}

// Reads one URL into a record, cutting the text down step by step. Each step is false when it
// refuses the URL.
class Reader {
  public:
    Reader(CUrlInfo& info, View url, bool unescape)
        : m_info(info), m_rest(url), m_unescape(unescape) {}

    bool read() {
        return take_scheme() && take_user() && take_query() && take_path() && take_port() &&
               take_host();
    }

  private:
    void unescape(CString& text) const {
        if (m_unescape) tvutil2::unescape(text);
    }

    // The text in front of `at`; the rest goes on behind `skip` units more.
    View take_front(std::size_t at, std::size_t skip) {
        const auto front = m_rest.substr(0, at);
        m_rest.remove_prefix(at + skip);
        return front;
    }
    // The text behind `at`; what stands in front of it goes on.
    View take_back(std::size_t at, std::size_t skip) {
        const auto back = m_rest.substr(at + skip);
        m_rest = m_rest.substr(0, at);
        return back;
    }

    bool take_scheme() {
        const auto at = m_rest.find(u"://");
        if (at == kNone) return true;
        if (at == 0) return false;
        m_info.m_strScheme = take_front(at, 3);
        if (is_key(m_info.m_strScheme, u"RDP")) m_info.m_nPort = kRdpPort;
        return true;
    }

    bool take_user() {
        if (m_rest.starts_with(u'@')) return false;
        const auto at = m_rest.rfind(u'@');
        if (at == kNone) return true;
        const auto user = take_front(at, 1);
        const auto colon = user.find(u':');
        if (colon == kNone || colon == 0) {
            m_info.m_strUser = user;
            return true;
        }
        m_info.m_strPassword = user.substr(colon + 1);
        unescape(m_info.m_strPassword);
        if (!tvutil2::reveal_for_account(m_info.m_strPassword)) return false;
        m_info.m_strUser = user.substr(0, colon);
        return true;
    }

    bool take_query() {
        const auto at = m_rest.rfind(u'?');
        if (at == kNone) return true;
        if (at == 0) return false;
        auto query = take_back(at, 1);
        while (!query.empty()) {
            auto end = query.find(u'&');
            if (end == kNone || end == 0) end = query.size();
            const auto item = query.substr(0, end);
            query.remove_prefix(std::min(end + 1, query.size()));
            if (!store(item)) return false;
        }
        return true;
    }

    bool store(View item) {
        const auto at = item.find(u'=');
        if (at == kNone || at == 0) return true;
        CString key(item.substr(0, at));
        CString value(item.substr(at + 1));
        unescape(key);
        unescape(value);
        if (is_key(key, u"Passphrase") && !tvutil2::reveal_for_account(value)) return false;

        auto& items = m_info.m_mapParams;
        const bool is_agent = is_key(key, u"Agent");
        const bool is_user_key = is_key(key, u"UserKey");
        for (const View name : {u"Session", u"UserKey", u"Proxy", u"Agent"}) {
            if (is_key(key, name)) items[name.data()] = value;
        }
        if (is_user_key || (is_agent && value.Compare(u"0") != 0)) {
            items[kAuthMethod] = kPublicKeyMethod;
        }
        if (!is_agent) items.Set(key.View(), value.View());
        return true;
    }

    bool take_path() {
        const auto at = m_rest.find(u'/');
        if (at == kNone) return true;
        if (at == 0) return false;
        m_info.m_strPath = take_back(at, 0);
        return true;
    }

    bool take_port() {
        const auto at = m_rest.rfind(u':');
        if (at == kNone) return true;
        if (at == 0) return false;
        if (has_port(m_rest)) {
            const CString number(take_back(at, 1));
            m_info.m_nPort = static_cast<WORD>(_wtoi(number));
        }
        return true;
    }

    bool take_host() {
        if (m_rest.empty()) return false;
        m_info.m_strHost = m_rest;
        for (auto* const text :
             {&m_info.m_strScheme, &m_info.m_strHost, &m_info.m_strUser, &m_info.m_strPath}) {
            unescape(*text);
        }
        return true;
    }

    CUrlInfo& m_info;
    View m_rest;
    bool m_unescape;
};

// Writes a secret, protected and escaped, behind `prefix`; false, and nothing, when there is no
// account.
bool append_secret(View prefix, const CString& secret, CString& url) {
    CString text(secret);
    if (!tvutil2::protect_for_account(text)) return false;
    url += prefix;
    tvutil2::append_escaped(text.View(), url);
    return true;
}

bool append_items(const CMapStringToString& items, bool with_secrets, CString& url) {
    url += u'?';
    View separator;
    CString key;
    CString value;
    for (auto position = items.GetStartPosition(); position != nullptr;) {
        items.GetNextAssoc(position, key, value);
        if (is_key(key, u"Passphrase")) {
            if (!with_secrets) continue;
            const CString prefix = CString(separator) + key + u"=";
            if (!append_secret(prefix.View(), value, url)) return false;
        } else {
            url += separator;
            tvutil2::append_escaped(key.View(), url);
            url += u'=';
            tvutil2::append_escaped(value.View(), url);
        }
        separator = u"&";
    }
    return true;
}

}  // namespace

CUrlInfo::~CUrlInfo() = default;

int CUrlInfo::Parse_URL(const char16_t* url, int unescape) {
    // A copy: the text may lie in a field that reading empties.
    const CString text(url);
    for (auto* const field : {&m_strScheme, &m_strUser, &m_strHost, &m_strPath}) field->Empty();
    m_nPort = 0;
    return Reader(*this, text.View(), unescape != 0).read() ? 1 : 0;
}

int CUrlInfo::MakeURL(CString& url, int dup, int secrets) const {
    url.Empty();
    if (!m_strScheme.IsEmpty()) {
        url = m_strScheme;
        url.MakeLower();
        url += u"://";
    }
    if (!m_strUser.IsEmpty()) {
        tvutil2::append_escaped(m_strUser.View(), url);
        if (secrets != 0 && !m_strPassword.IsEmpty() && !append_secret(u":", m_strPassword, url)) {
            return 0;
        }
        url += u'@';
    }
    tvutil2::append_escaped(m_strHost.View(), url);
    if (m_nPort != 0) url.AppendFormat(u":%d", m_nPort);
    if (!m_strPath.IsEmpty()) {
        auto path = m_strPath.View();
        if (path.starts_with(u'/')) path.remove_prefix(1);
        url += u'/';
        tvutil2::append_escaped(path, url);
    }
    const bool has_query = !m_mapParams.IsEmpty();
    if (has_query && !append_items(m_mapParams, secrets != 0, url)) return 0;
    if (dup != 0) {
        if (!url.View().ends_with(u'?')) url += has_query ? u'&' : u'?';
        url += u"DupSession=1";
    }
    return 1;
}

int CUrlInfo::IsURLWithPort(const CString& text) {
    return has_port(text.View()) ? 1 : 0;
}

int CUrlInfo::EncryptString(const char* key, CString& text, MAC mac, ENC /*enc*/) {
    return tvutil2::encrypt_string(key, text, mac);
}

int CUrlInfo::DecryptString(const char* key, CString& text, MAC mac, ENC /*enc*/) {
    return tvutil2::decrypt_string(key, text, mac);
}
