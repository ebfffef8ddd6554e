// A stand-in for the session browser, of which one runs at a time: a second start hands its
// arguments to the first one and ends.
//
// The first one says so, then tells each text that it is handed, on standard output, a line each.
#include "tvutil2/frame/startup.h"
#include "tvutil2/threads/single_instance.h"

#include <unistd.h>

#include <cstdio>
#include <string>
#include <utility>

namespace {

void say(const char* what, const char* text) {
    std::printf("%s%s\n", what, text);
    std::fflush(stdout);
}

class Browser : public NUtil::CSingleInstance {
  public:
    explicit Browser(std::string text) : m_text(std::move(text)) {}
    void OnSecondInstance() override { SetData(m_text.c_str()); }
    void OnSecondInstanceDetected() override { say("told: ", GetData()); }

  private:
    std::string m_text;
};

}  // namespace

int main(int argc, char** argv) {
    TvCommonInitialize(1);
    std::string text;
    for (int i = 1; i < argc; ++i) text.append(i > 1 ? " " : "").append(argv[i]);
    Browser browser(text);
    if (!browser.Create(u"Vantrosa8")) {
        say("handed over: ", text.c_str());
        return 0;
    }
    say("first: ", text.c_str());
    for (;;) pause();
}
