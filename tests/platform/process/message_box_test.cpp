#include "tvutil2/platform/process/message_box.h"

#include "tvutil2/platform/base/last_error.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <string>

#include "tests/support/profile.h"

namespace {

// A box asked on a terminal of its own, by a child process whose exit code is the answer.
class Asked {
  public:
    explicit Asked(const std::function<int()>& ask) {
        m_child = forkpty(&m_terminal, nullptr, nullptr, nullptr);
        if (m_child == 0) _exit(ask());
    }
    ~Asked() { close(m_terminal); }
    Asked(const Asked&) = delete;
    Asked& operator=(const Asked&) = delete;

    // Reads until the terminal has shown `text` once more; all that was shown.
    const std::string& wait_for(const std::string& text) {
        while (m_shown.find(text, m_seen) == std::string::npos) {
            char block[1024];
            const auto size = read(m_terminal, block, sizeof block);
            if (size <= 0) {
                ADD_FAILURE() << "never shown: " << text << "\nshown: " << m_shown;
                return m_shown;
            }
            m_shown.append(block, static_cast<std::size_t>(size));
        }
        m_seen = m_shown.find(text, m_seen) + text.size();
        return m_shown;
    }
    void type(const std::string& keys) const {
        EXPECT_EQ(write(m_terminal, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }
    void hang_up() {
        close(m_terminal);
        m_terminal = -1;
    }
    int answer() const {
        int status = 0;
        waitpid(m_child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

  private:
    int m_terminal = -1;
    pid_t m_child;
    std::string m_shown;
    std::size_t m_seen = 0;
};

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
        Asked box([type = type] { return MessageBoxW(nullptr, u"Sure?", u"Tool", type); });
        box.wait_for(kPromptEnd);
        box.type(typed);
        EXPECT_EQ(box.answer(), id) << typed << " of type " << type;
    }
}

TEST(MessageBox, AsksAgainUntilTheAnswerIsOne) {
    Asked box([] { return MessageBoxW(nullptr, u"Delete all?", u"Tool", MB_YESNO); });
    box.wait_for(kPromptEnd);
    for (const auto* nonsense : {"maybe\n", "yesyes\n", "ye\n", "\x1B[A\n"}) {
        box.type(nonsense);
        box.wait_for(kPromptEnd);
    }
    box.type(std::string(300, 'y') + "\n");
    box.wait_for(kPromptEnd);
    box.type("yes\n");
    EXPECT_EQ(box.answer(), IDYES);
}

TEST(MessageBox, EndOfInputAndHangUpRefuse) {
    Asked ended([] { return MessageBoxW(nullptr, u"Go?", u"Tool", MB_OKCANCEL); });
    ended.wait_for(kPromptEnd);
    ended.type("\x04");
    EXPECT_EQ(ended.answer(), IDCANCEL);

    Asked hung_up([] {
        signal(SIGHUP, SIG_IGN);
        return MessageBoxW(nullptr, u"Go?", u"Tool", MB_YESNO);
    });
    hung_up.wait_for(kPromptEnd);
    hung_up.hang_up();
    EXPECT_EQ(hung_up.answer(), IDNO);
}

TEST(MessageBox, HostileTextIsShownNotObeyed) {
    Asked box([] {
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
    EXPECT_EQ(box.answer(), IDOK);
}

// Runs without a controlling terminal, standard error in a file.
int asked_of_nobody(UINT type, std::string& printed) {
    const auto file = tests::new_folder() + "/stderr";
    const auto child = fork();
    if (child == 0) {
        setsid();
        dup2(open(file.c_str(), O_WRONLY | O_CREAT, 0600), STDERR_FILENO);
        _exit(MessageBoxW(nullptr, u"Run it anyway?", u"Tool", type));
    }
    int status = 0;
    waitpid(child, &status, 0);
    printed = tests::read_file(file);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(MessageBox, NothingIsApprovedWhenNobodyCanBeAsked) {
    struct {
        UINT type;
        int id;
    } const cases[] = {
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
        EXPECT_EQ(asked_of_nobody(type, printed), id) << type;
        EXPECT_NE(printed.find("Run it anyway?"), std::string::npos) << "never in silence";
    }
}

TEST(MessageBox, InTheBackgroundNobodyIsAsked) {
    // A background process that read from the terminal would be stopped.
    Asked box([] {
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
    EXPECT_EQ(box.answer(), IDNO);
}

TEST(MessageBox, UnknownSetsOfButtonsAreRefused) {
    EXPECT_EQ(MessageBoxW(nullptr, u"x", u"y", 7), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_MSGBOX_STYLE);
}

}  // namespace
