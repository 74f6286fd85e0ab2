// password_host HOST_KEY PASSWORD PROMPT TRIES
//
// A host on loopback that lets in everybody with the password, under any name, and runs commands as the user that has
// started it. An sshd can do so only as root, with an account of the machine.
//
// With an empty PROMPT it takes the password as such; else it asks for it in these words (keyboard-interactive). On
// standard error it says "Server listening on port N.". Each password that it is told is a line of the file TRIES
// before the client learns whether it was right.

#include <arpa/inet.h>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <libssh/callbacks.h>
#include <libssh/libssh.h>
#include <libssh/server.h>
#include <list>
#include <netinet/in.h>
#include <string>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

[[noreturn]] void fail(char const *what)
{
    std::perror(what);
    std::exit(EXIT_FAILURE);
}

void say(std::string const &line)
{
    // In one piece: several connections say something.
    (void)!::write(STDERR_FILENO, line.data(), line.size());
}

struct Login {
    std::string password;
    std::string prompt;
    char const *tries = nullptr;
};

class Connection;

/// A command that runs for a channel.
struct Command {
    Connection *connection = nullptr;
    ssh_channel channel = nullptr;
    pid_t process = -1;
    int input = -1;
    int output = -1;
    ssh_channel_callbacks_struct callbacks{};
};

class Connection {
public:
    Connection(ssh_session opened, Login const &wanted) : session(opened), login(wanted) {}

    int run()
    {
        ssh_set_auth_methods(session, method());
        callbacks.userdata = this;
        callbacks.auth_password_function = [](ssh_session, char const *, char const *told, void *self) {
            auto const &connection = *static_cast<Connection *>(self);
            return static_cast<int>(connection.isRight(told) ? SSH_AUTH_SUCCESS : SSH_AUTH_DENIED);
        };
        ssh_callbacks_init(&callbacks);
        ssh_set_server_callbacks(session, &callbacks);
        ssh_set_message_callback(session, take, this);
        if (ssh_handle_key_exchange(session) != SSH_OK)
            return EXIT_FAILURE;
        ssh_event_add_session(events, session);
        while (ssh_is_connected(session) && ssh_event_dopoll(events, -1) != SSH_ERROR) {
        }
        for (auto const &command : commands)
            ::kill(command.process, SIGKILL);
        return EXIT_SUCCESS;
    }

private:
    int method() const { return login.prompt.empty() ? SSH_AUTH_METHOD_PASSWORD : SSH_AUTH_METHOD_INTERACTIVE; }

    /// 0: it was answered.
    static int take(ssh_session /*session*/, ssh_message message, void *self)
    {
        return static_cast<Connection *>(self)->answer(message) ? 0 : 1;
    }

    bool answer(ssh_message message)
    {
        switch (ssh_message_type(message)) {
        case SSH_REQUEST_AUTH:
            return answerLogin(message);
        case SSH_REQUEST_CHANNEL_OPEN:
            return openChannel(message);
        case SSH_REQUEST_CHANNEL:
            if (ssh_message_subtype(message) != SSH_CHANNEL_REQUEST_EXEC)
                return false;
            ssh_message_channel_request_reply_success(message);
            start(ssh_message_channel_request_channel(message), ssh_message_channel_request_command(message));
            return true;
        default:
            return false;
        }
    }

    bool answerLogin(ssh_message message)
    {
        if (ssh_message_subtype(message) != SSH_AUTH_METHOD_INTERACTIVE || login.prompt.empty())
            return false;
        if (ssh_message_auth_kbdint_is_response(message)) {
            auto const *const told = ssh_userauth_kbdint_getanswer(session, 0);
            if (!isRight(told ? told : ""))
                return false;
            ssh_message_auth_reply_success(message, 0);
            return true;
        }
        std::array<char const *, 1> prompts{login.prompt.c_str()};
        std::array<char, 1> echo{0};
        ssh_message_auth_interactive_request(message, "", "", 1, prompts.data(), echo.data());
        return true;
    }

    void note(std::string const &told) const
    {
        auto const line = told + '\n';
        auto const file = ::open(login.tries, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
        // In one piece: several connections note something.
        if (file < 0 || ::write(file, line.data(), line.size()) != ssize_t(line.size()))
            fail(login.tries);
        ::close(file);
    }

    bool isRight(char const *told) const
    {
        note(told);
        return told == login.password;
    }

    bool openChannel(ssh_message message)
    {
        if (ssh_message_subtype(message) != SSH_CHANNEL_SESSION)
            return false;
        ssh_message_channel_request_open_reply_accept(message);
        return true;
    }

    void start(ssh_channel channel, std::string const &line)
    {
        auto &command = commands.emplace_back();
        command.connection = this;
        command.channel = channel;
        std::array<int, 2> in{};
        std::array<int, 2> out{};
        if (::pipe2(in.data(), O_CLOEXEC) != 0 || ::pipe2(out.data(), O_CLOEXEC) != 0)
            fail("pipe");
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
        std::string shell = "sh";
        std::string flag = "-c";
        auto text = line;
        std::array<char *, 4> arguments{shell.data(), flag.data(), text.data(), nullptr};
        if (::posix_spawn(&command.process, "/bin/sh", &actions, nullptr, arguments.data(), environ) != 0)
            fail("sh");
        posix_spawn_file_actions_destroy(&actions);
        ::close(in[0]);
        ::close(out[1]);
        command.input = in[1];
        command.output = out[0];
        listenTo(command);
    }

    void listenTo(Command &command) const
    {
        command.callbacks.userdata = &command;
        command.callbacks.channel_data_function = [](ssh_session, ssh_channel, void *data, uint32_t length, int,
                                                     void *of) {
            auto const &target = *static_cast<Command *>(of);
            auto const written = ::write(target.input, data, length);
            return static_cast<int>(written < 0 ? length : written); // one that does not read any more gets nothing
        };
        command.callbacks.channel_eof_function = [](ssh_session, ssh_channel, void *of) { closeInput(of); };
        command.callbacks.channel_close_function = [](ssh_session, ssh_channel, void *of) { closeInput(of); };
        ssh_callbacks_init(&command.callbacks);
        ssh_set_channel_callbacks(command.channel, &command.callbacks);
        ssh_event_add_fd(events, command.output, POLLIN | POLLHUP, pass, &command);
    }

    static void closeInput(void *of)
    {
        auto &command = *static_cast<Command *>(of);
        if (command.input >= 0)
            ::close(command.input);
        command.input = -1;
    }

    /// From the command to the client.
    static int pass(socket_t /*output*/, int /*what*/, void *of)
    {
        auto &command = *static_cast<Command *>(of);
        std::array<char, 16384> buffer{};
        auto const count = ::read(command.output, buffer.data(), buffer.size());
        if (count > 0) {
            ssh_channel_write(command.channel, buffer.data(), static_cast<uint32_t>(count));
            return 0;
        }
        ssh_event_remove_fd(command.connection->events, command.output);
        int status = 0;
        ::waitpid(command.process, &status, 0);
        ssh_channel_request_send_exit_status(command.channel, WIFEXITED(status) ? WEXITSTATUS(status) : 255);
        ssh_channel_send_eof(command.channel);
        ssh_channel_close(command.channel);
        return 0;
    }

    ssh_session const session;
    Login const login;
    ssh_server_callbacks_struct callbacks{};
    ssh_event const events = ssh_event_new();
    std::list<Command> commands;
};

int listenOnLoopback()
{
    auto const listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto *const generic = reinterpret_cast<sockaddr *>(&address);
    if (listener < 0 || ::bind(listener, generic, length) != 0 || ::listen(listener, SOMAXCONN) != 0 ||
        ::getsockname(listener, generic, &length) != 0)
        fail("listen");
    say("Server listening on port " + std::to_string(ntohs(address.sin_port)) + ".\n");
    return listener;
}

int serve(int connection, char const *hostKey, Login const &login)
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    auto const binding = ssh_bind_new();
    auto const session = ssh_new();
    ssh_bind_options_set(binding, SSH_BIND_OPTIONS_HOSTKEY, hostKey);
    if (ssh_bind_accept_fd(binding, session, connection) != SSH_OK) {
        std::fprintf(stderr, "password_host: %s\n", ssh_get_error(binding));
        return EXIT_FAILURE;
    }
    return Connection(session, login).run();
}

} // namespace

int main(int count, char **arguments)
{
    if (count != 5) {
        std::fputs("password_host: wrong arguments\n", stderr);
        return EXIT_FAILURE;
    }
    ::signal(SIGPIPE, SIG_IGN);
    Login const login{.password = arguments[2], .prompt = arguments[3], .tries = arguments[4]};
    auto const listener = listenOnLoopback();
    for (;;) {
        auto const connection = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection >= 0 && ::fork() == 0)
            ::_exit(serve(connection, arguments[1], login));
        ::close(connection);
        while (::waitpid(-1, nullptr, WNOHANG) > 0) {
        }
    }
}
