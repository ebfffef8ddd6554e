#include "tvutil2/platform/process/message_box.h"

#include "tvutil2/platform/base/last_error.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <string>

#include "tests/support/child.h"

namespace {

using tests::Terminal;

constexpr auto kPromptEnd = "): ";

TEST(MessageBox, AnswersOnATerminal) {
    struct {
        UINT type;
        const char* typed;
        int id;
    } const cases[] = {
        {MB_OK, "\n", IDOK},
        {MB_OKCANCEL, "c\n", IDCANCEL},
        {MB_OKCANCEL, "\n", IDOK},
        {MB_OKCANCEL | MB_DEFBUTTON2, "\n", IDCANCEL},
        {MB_OKCANCEL | MB_DEFBUTTON4, "\n", IDOK},
        {MB_OKCANCEL | MB_DEFBUTTON2, "ok\n", IDOK},
        {MB_YESNO, "Y\n", IDYES},
        {MB_YESNO, " no \n", IDNO},
        {MB_YESNOCANCEL | MB_DEFBUTTON3, "\n", IDCANCEL},
        {MB_ABORTRETRYIGNORE, "r\n", IDRETRY},
        {MB_RETRYCANCEL, "retry\n", IDRETRY},
        {MB_CANCELTRYCONTINUE, "try again\n", IDTRYAGAIN},
        {MB_CANCELTRYCONTINUE, "g\n", IDCONTINUE},
    };
    for (const auto& [type, typed, id] : cases) {
        Terminal box([type = type] { return MessageBoxW(nullptr, u"Sure?", u"Tool", type); });
        box.wait_for(kPromptEnd);
        box.type(typed);
        EXPECT_EQ(box.result(), id) << typed << " of type " << type;
    }
}

TEST(MessageBox, AsksAgainUntilTheAnswerIsOne) {
    Terminal box([] { return MessageBoxW(nullptr, u"Delete all?", u"Tool", MB_YESNO); });
    box.wait_for(kPromptEnd);
    for (const auto* nonsense : {"maybe\n", "yesyes\n", "ye\n", "\x1B[A\n"}) {
        box.type(nonsense);
        box.wait_for(kPromptEnd);
    }
    box.type(std::string(300, 'y') + "\n");
    box.wait_for(kPromptEnd);
    box.type("yes\n");
    EXPECT_EQ(box.result(), IDYES);
}

TEST(MessageBox, EndOfInputAndHangUpRefuse) {
    Terminal ended([] { return MessageBoxW(nullptr, u"Go?", u"Tool", MB_OKCANCEL); });
    ended.wait_for(kPromptEnd);
    ended.type("\x04");
    EXPECT_EQ(ended.result(), IDCANCEL);

    Terminal hung_up([] {
        signal(SIGHUP, SIG_IGN);
        return MessageBoxW(nullptr, u"Go?", u"Tool", MB_YESNO);
    });
    hung_up.wait_for(kPromptEnd);
    hung_up.hang_up();
    EXPECT_EQ(hung_up.result(), IDNO);
}

TEST(MessageBox, HostileTextIsShownNotObeyed) {
    Terminal box([] {
        return MessageBoxW(nullptr, u"a\x1B[2Jb\x9B\x07\n[Y]es\u202Eexe.txt\r\nend",
                           u"T\x1B]0;x\x07", MB_OK);
    });
    const auto shown = box.wait_for(kPromptEnd);
    EXPECT_EQ(shown.find('\x1B'), std::string::npos);
    EXPECT_EQ(shown.find('\x07'), std::string::npos);
    EXPECT_EQ(shown.find("\xE2\x80\xAE"), std::string::npos);
    EXPECT_NE(shown.find("a<001B>[2Jb<009B><0007>\r\n  [Y]es<202E>exe.txt\r\n  end"),
              std::string::npos)
        << shown;
    box.type("\n");
    EXPECT_EQ(box.result(), IDOK);
}

TEST(MessageBox, NothingIsApprovedWhenNobodyCanBeAsked) {
    const std::pair<UINT, int> cases[] = {
        {MB_OK, IDOK},
        {MB_OKCANCEL | MB_DEFBUTTON1, IDCANCEL},
        {MB_ABORTRETRYIGNORE | MB_DEFBUTTON3, IDABORT},
        {MB_YESNOCANCEL | MB_DEFBUTTON1, IDCANCEL},
        {MB_YESNO | MB_DEFBUTTON1, IDNO},
        {MB_RETRYCANCEL, IDCANCEL},
        {MB_CANCELTRYCONTINUE | MB_DEFBUTTON3, IDCANCEL},
    };
    for (const auto& [type, id] : cases) {
        std::string printed;
        EXPECT_EQ(
            tests::in_child_alone(
                [type = type] { return MessageBoxW(nullptr, u"Run it anyway?", u"Tool", type); },
                printed),
            id)
            << type;
        EXPECT_NE(printed.find("Run it anyway?"), std::string::npos) << "never in silence";
    }
}

TEST(MessageBox, InTheBackgroundNobodyIsAsked) {
    // A background process that read from the terminal would be stopped.
    Terminal box([] {
        const auto child = fork();
        if (child == 0) {
            setpgid(0, 0);
            _exit(MessageBoxW(nullptr, u"Go?", u"Tool", MB_YESNO));
        }
        int status = 0;
        waitpid(child, &status, WUNTRACED);
        return WIFEXITED(status) ? WEXITSTATUS(status) : 99;
    });
    box.wait_for("nobody could be asked");
    EXPECT_EQ(box.result(), IDNO);
}

TEST(MessageBox, UnknownSetsOfButtonsAreRefused) {
    EXPECT_EQ(MessageBoxW(nullptr, u"x", u"y", 7), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_MSGBOX_STYLE);
}

}  // namespace
