#include "tests/support/session_bus.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "tests/support/profile.h"

namespace tests {
namespace {

std::string bus_configuration() {
    const auto folder = new_folder();
    const auto services = profile_folder() + "/home/.local/share/dbus-1/services";
    std::filesystem::create_directories(services);
    write_file(folder + "/bus.conf",
               "<busconfig><type>session</type><listen>unix:path=" + folder +
                   "/socket</listen><servicedir>" + services +
                   "</servicedir><policy context='default'><allow send_destination='*'/>"
                   "<allow receive_sender='*'/><allow own='*'/></policy></busconfig>");
    return "--config-file=" + folder + "/bus.conf";
}

std::vector<std::string> server_arguments(const std::vector<std::string>& abilities, int first_id,
                                          const std::string& name) {
    std::vector<std::string> arguments = {std::to_string(first_id), name};
    arguments.insert(arguments.end(), abilities.begin(), abilities.end());
    return arguments;
}

}  // namespace

PipedProcess::PipedProcess(const std::string& file, const std::vector<std::string>& arguments) {
    std::vector<char*> words{const_cast<char*>(file.c_str())};
    for (const auto& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    int in[2];
    int out[2];
    if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0) std::abort();
    m_process = fork();
    if (m_process == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        dup2(in[0], STDIN_FILENO);
        dup2(out[1], STDOUT_FILENO);
        execvp(words[0], words.data());
        _exit(127);
    }
    close(in[0]);
    close(out[1]);
    m_in = fdopen(in[1], "w");
    m_out = fdopen(out[0], "r");
}

PipedProcess::~PipedProcess() {
    if (m_process > 0) kill(m_process, SIGKILL);
    join();
    std::fclose(m_in);
    std::fclose(m_out);
}

void PipedProcess::join() {
    if (m_process > 0) waitpid(m_process, nullptr, 0);
    m_process = -1;
}

std::string PipedProcess::line() {
    std::string text;
    for (int c = 0; (c = std::fgetc(m_out)) != EOF && c != '\n';) text += static_cast<char>(c);
    return text;
}

void PipedProcess::write_line(const std::string& text) {
    std::fprintf(m_in, "%s\n", text.c_str());
    std::fflush(m_in);
}

SessionBus::SessionBus()
    : m_daemon("dbus-daemon", {bus_configuration(), "--nofork", "--print-address"}) {
    setenv("DBUS_SESSION_BUS_ADDRESS", m_daemon.line().c_str(), 1);
    // Where the server looks for desktop entries.
    setenv("XDG_DATA_HOME", (profile_folder() + "/home/.local/share").c_str(), 1);
}

SessionBus::~SessionBus() {
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
}

NotificationServer::NotificationServer(const std::string& program,
                                       const std::vector<std::string>& abilities, int first_id,
                                       const std::string& name)
    : m_process(program, server_arguments(abilities, first_id, name)) {
    EXPECT_EQ(m_process.line(), "ready");
}

std::vector<std::string> NotificationServer::asked() {
    std::istringstream line(m_process.line());
    std::vector<std::string> fields;
    for (std::string field; std::getline(line, field, '\t');) fields.push_back(field);
    return fields;
}

void NotificationServer::order(const std::string& text) {
    m_process.write_line(text);
    EXPECT_EQ(m_process.line(), "done");
}

}  // namespace tests
