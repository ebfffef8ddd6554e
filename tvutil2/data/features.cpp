#include "tvutil2/data/features.h"

#include "tvutil2/data/path.h"
#include "tvutil2/data/user_data.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/settings/ini_file.h"

namespace {

constexpr struct {
    const char16_t* section;
    const char16_t* key;
    BOOL CTvExpFeatures::*value;
} kSwitches[] = {
    {u"Common", u"CertKey", &CTvExpFeatures::m_bCertKey},
    {u"Pelrin", u"RealCmd", &CTvExpFeatures::m_bRealCmd},
    {u"Pelrin", u"RecentList", &CTvExpFeatures::m_bPelrinRecentList},
    {u"Pelrin", u"JumpHost", &CTvExpFeatures::m_bJumpHost},
    {u"Pelrin", u"ScpCmd", &CTvExpFeatures::m_bScpCmd},
    {u"Dovr", u"RecentList", &CTvExpFeatures::m_bDovrRecentList},
    {u"Dovr", u"FileFilter", &CTvExpFeatures::m_bFileFilter},
};

}  // namespace

CTvExpFeatures::CTvExpFeatures() : m_strPath(GetUserDataFolderPath(0)) {
    AppendPath(m_strPath, u"Features.ini");
}

CTvExpFeatures::CTvExpFeatures(const CTvExpFeatures&) = default;
CTvExpFeatures& CTvExpFeatures::operator=(const CTvExpFeatures&) = default;

CTvExpFeatures& CTvExpFeatures::GetInstance() {
    static CTvExpFeatures instance;
    return instance;
}

void CTvExpFeatures::Load() {
    CIniFile file(m_strPath);
    for (const auto& [section, key, value] : kSwitches) {
        this->*value = file.GetValue(section, key, 0);
    }
}

void CTvExpFeatures::Save() {
    CIniFile file(m_strPath);
    for (const auto& [section, key, value] : kSwitches) file.SetValue(section, key, this->*value);
    file.Write(m_strPath, 1, 0);
}

int CTvExpFeatures::Configure(unsigned int /*program*/, unsigned int /*dialog*/) {
    MessageBoxW(nullptr, u"We currently do not have any experimental features.", u"Notice", MB_OK);
    return 1;
}

void CTvExpFeatures::PopupOnce(unsigned int /*program*/, unsigned int /*dialog*/) {}
