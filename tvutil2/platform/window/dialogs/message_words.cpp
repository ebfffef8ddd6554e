#include "tvutil2/platform/window/dialogs/message_words.h"

#include "tvutil2/platform/base/language_rows.h"
#include "tvutil2/platform/process/message_box.h"

#include <algorithm>
#include <iterator>

namespace tvutil2 {
namespace {

// OK, Cancel, Abort, Retry, Ignore, Yes, No, Try again and Continue; no mnemonic twice in a set.
struct Words {
    WORD language;  // a primary one, but for simplified Chinese
    const char16_t* words[9];
};

constexpr Words kWords[] = {
    {0x09,
     {u"OK", u"Cancel", u"&Abort", u"&Retry", u"&Ignore", u"&Yes", u"&No", u"&Try Again",
      u"&Continue"}},
    {0x0804,
     {u"确定", u"取消", u"中止(&A)", u"重试(&R)", u"忽略(&I)", u"是(&Y)", u"否(&N)", u"重试(&T)",
      u"继续(&C)"}},
    {0x04,
     {u"確定", u"取消", u"中止(&A)", u"重試(&R)", u"略過(&I)", u"是(&Y)", u"否(&N)", u"重試(&T)",
      u"繼續(&C)"}},
    {0x07,
     {u"OK", u"Abbrechen", u"&Abbrechen", u"&Wiederholen", u"&Ignorieren", u"&Ja", u"&Nein",
      u"&Wiederholen", u"&Fortsetzen"}},
    {0x0A,
     {u"Aceptar", u"Cancelar", u"&Anular", u"&Reintentar", u"&Omitir", u"&Sí", u"&No",
      u"&Reintentar", u"&Continuar"}},
    {0x0C,
     {u"OK", u"Annuler", u"&Abandonner", u"&Réessayer", u"&Ignorer", u"&Oui", u"&Non",
      u"&Réessayer", u"&Continuer"}},
    {0x11,
     {u"OK", u"キャンセル", u"中止(&A)", u"再試行(&R)", u"無視(&I)", u"はい(&Y)", u"いいえ(&N)",
      u"再実行(&T)", u"続行(&C)"}},
    {0x12,
     {u"확인", u"취소", u"중단(&A)", u"다시 시도(&R)", u"무시(&I)", u"예(&Y)", u"아니요(&N)",
      u"다시 시도(&T)", u"계속(&C)"}},
    {0x16,
     {u"OK", u"Cancelar", u"&Anular", u"&Repetir", u"&Ignorar", u"&Sim", u"&Não",
      u"&Tentar novamente", u"&Continuar"}},
    {0x19,
     {u"ОК", u"Отмена", u"П&рервать", u"&Повторить", u"Проп&устить", u"&Да", u"&Нет", u"&Повторить",
      u"Продол&жить"}},
    {0x1B,
     {u"OK", u"Zrušiť", u"&Prerušiť", u"&Opakovať", u"&Ignorovať", u"&Áno", u"&Nie",
      u"&Skúsiť znova", u"Po&kračovať"}},
};

constexpr int kButtons[] = {IDOK,  IDCANCEL, IDABORT,    IDRETRY,   IDIGNORE,
                            IDYES, IDNO,     IDTRYAGAIN, IDCONTINUE};

}  // namespace

const char16_t* message_word(int button, LANGID language) {
    const auto* const which = std::find(std::begin(kButtons), std::end(kButtons), button);
    if (which == std::end(kButtons)) return nullptr;
    return row_or_english(kWords, language).words[which - std::begin(kButtons)];
}

}  // namespace tvutil2
