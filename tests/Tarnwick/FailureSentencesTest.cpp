#include "Tarnwick/Panes/FailureSentences.h"

#include "Tarnwick/Panes/HostWording.h"
#include "tests/support/FailedClients.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using Action = PaneNotice::Action;
using Cause = HostFailure::Cause;

struct Row {
    RemoteShellError::ConnectFailed error;
    Cause cause;
    std::string sentences;
};

/// What clients of OpenSSH 8 to 10 wrote.
std::vector<Row> const &table()
{
    static std::vector<Row> const rows{
        {failed(changedKeyBox), Cause::changedKey,
         "The key of web has changed. This happens when it was installed anew, or when somebody stands in between. The "
         "old key is in known_hosts:12."},
        {failed("@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@\r\n"
                "@       WARNING: REVOKED HOST KEY DETECTED!               @\r\n"
                "@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@\r\n"
                "The ED25519 host key for web is marked as revoked.\r\n"
                "This could mean that a stolen key is being used to\r\n"
                "impersonate this host.\r\n"
                "ED25519 host key for web was revoked and you have requested strict checking.\r\n"
                "Host key verification failed.\r\n"),
         Cause::revokedKey, "The key of web is marked as revoked. Ask for its new key before you go on."},
        {failed("Host key verification failed.\r\n"), Cause::unknownKey,
         "The key of web is not known yet. Log in to see it and to decide."},
        {failed("No ED25519 host key is known for web and you have requested strict checking.\r\n"
                "Host key verification failed.\r\n"),
         Cause::unknownKey, "The key of web is not known yet. Log in to see it and to decide."},
        {failed(std::string(keyExchanged) +
                "debug1: Authentications that can continue: publickey\r\n"
                "debug1: Next authentication method: publickey\r\n"
                "debug1: Offering public key: /home/ann/.ssh/id_ed25519 ED25519 SHA256:fN9hl explicit\r\n"
                "debug1: Authentications that can continue: publickey\r\n"
                "debug1: Offering public key: /home/ann/.ssh/id_rsa RSA SHA256:16b agent\r\n"
                "debug1: Authentications that can continue: publickey\r\n"
                "debug1: No more authentication methods to try.\r\n"
                "ann@web: Permission denied (publickey).\r\n"),
         Cause::refusedKeys,
         "web refused the keys id_ed25519, id_rsa. Add one to ~/.ssh/authorized_keys there, or name the right one in "
         "~/.ssh/config."},
        {failed(std::string(keyExchanged) + "debug1: Authentications that can continue: publickey\r\n"
                                            "ann@web: Permission denied (publickey).\r\n"),
         Cause::noKey,
         "web takes only keys, and ssh had none to offer. Make one with ssh-keygen, or name it in ~/.ssh/config."},
        {failed(std::string(keyExchanged) + "ann@web: Permission denied (gssapi-with-mic).\r\n"), Cause::noKey,
         "web takes none of the usual ways to log in, only gssapi-with-mic."},
        {failed(std::string(keyExchanged) + "ann@web: Permission denied (publickey,password).\r\n"),
         Cause::needsAnswers, "web wants a password. Log in to give it."},
        {failed(std::string(keyExchanged) +
                "debug1: Offering public key: /home/ann/.ssh/id_rsa RSA SHA256:hWAMJ explicit\r\n"
                "debug1: Authentications that can continue: publickey,password,keyboard-interactive\r\n"
                "ann@web: Permission denied (publickey,password,keyboard-interactive).\r\n"),
         Cause::needsAnswers, "web wants a password or a code. It refused the key id_rsa. Log in to answer."},
        {failed(std::string(keyExchanged) +
                "debug1: Server accepts key: /home/ann/.ssh/id_ed25519 ED25519 SHA256:fN9hl explicit\r\n"
                "Authenticated using \"publickey\" with partial success.\r\n"
                "debug1: Authentications that can continue: keyboard-interactive\r\n"
                "ann@web: Permission denied (keyboard-interactive).\r\n"),
         Cause::needsAnswers, "web wants an answer, such as a password or a code. Log in to give it."},
        {failed(std::string(keyExchanged) +
                "debug1: Authentications that can continue: publickey,password\r\n"
                "debug1: Offering public key: /home/ann/.ssh/id_ed25519 ED25519 SHA256:hWAMJ explicit\r\n"
                "debug1: Server accepts key: /home/ann/.ssh/id_ed25519 ED25519 SHA256:hWAMJ explicit\r\n"
                "debug1: No more authentication methods to try.\r\n"
                "ann@web: Permission denied (publickey,password).\r\n"),
         Cause::needsPassphrase,
         "The key id_ed25519 for web needs its passphrase. Log in to give it, or add the key to your agent."},
        {failed(std::string(keyExchanged) +
                "debug1: Server accepts key: /home/ann/.ssh/id_ed25519 ED25519 SHA256:hWAMJ agent\r\n"
                "sign_and_send_pubkey: signing failed for ED25519 \"/home/ann/.ssh/id_ed25519\" from agent: agent "
                "refused operation\r\n"
                "ann@web: Permission denied (publickey).\r\n"),
         Cause::agentRefused,
         "Your agent did not use the key id_ed25519 for web. Unlock the agent, or confirm when it asks."},
        {failed(std::string(keyExchanged) + "debug1: Next authentication method: password\r\n"
                                            "debug1: Authentications that can continue: publickey,password\r\n"
                                            "debug1: No more authentication methods to try.\r\n"
                                            "ann@web: Permission denied (publickey,password).\r\n"),
         Cause::wrongPassword, "web refused the password or code. Log in to give another one."},
        {failed(std::string(keyExchanged) +
                "Received disconnect from 192.0.2.7 port 22:2: Too many authentication failures\r\n"
                "Disconnected from 192.0.2.7 port 22\r\n"),
         Cause::tooManyFailures,
         "web ended the login after too many tries. Name the right key in ~/.ssh/config, with IdentitiesOnly yes."},
        {failed("@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@\r\n"
                "@         WARNING: UNPROTECTED PRIVATE KEY FILE!          @\r\n"
                "@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@@\r\n"
                "Permissions 0644 for '/home/ann/.ssh/id_rsa' are too open.\r\n"
                "It is required that your private key files are NOT accessible by others.\r\n"
                "This private key will be ignored.\r\n"
                "Load key \"/home/ann/.ssh/id_rsa\": bad permissions\r\n"
                "ann@web: Permission denied (publickey).\r\n"),
         Cause::openKeyFile,
         "ssh ignores the key /home/ann/.ssh/id_rsa, because other users may read it. Take that right from them: chmod "
         "600."},
        {failed(std::string(loggedIn) + "WARNING: Your password has expired.\n"
                                        "Password change required but no TTY available.\n"),
         Cause::expiredPassword, "Your password on web has expired. Log in with ssh in a terminal to set a new one."},
        {failed(std::string(keyExchanged) + "Your account has expired; please contact your system administrator.\n"
                                            "Connection closed by 192.0.2.7 port 22\r\n"),
         Cause::expiredAccount, "Your account on web has expired. Only those who run the host can renew it."},
        {failed(std::string(keyExchanged) +
                "\"System is booting up. Unprivileged users are not permitted to log in yet. Please come back later. "
                "For technical details, see pam_nologin(8).\"\n"
                "Connection closed by 192.0.2.7 port 22\r\n"),
         Cause::closedForNow,
         "Nobody is let in at the moment. web says: \"System is booting up. Unprivileged users are not permitted to "
         "log "
         "in yet. Please come back later. For technical details, see pam_nologin(8).\""},
        {failed("ssh: Could not resolve hostname web.example: Name or service not known\r\n"), Cause::noSuchName,
         "There is no host with the name web.example. Check the name, or HostName in ~/.ssh/config."},
        {failed("ssh: Could not resolve hostname web: Temporary failure in name resolution\r\n"), Cause::noNameServer,
         "The name web could not be looked up. Check the network of this computer."},
        {failed("ssh: connect to host 2001:db8::1 port 22: No route to host\r\n"), Cause::noRoute,
         "There is no way to web from here. Check the network, or the VPN."},
        {failed("ssh: connect to host 192.0.2.7 port 22: Network is unreachable\r\n"), Cause::noRoute,
         "There is no way to web from here. Check the network, or the VPN."},
        {failed("ssh: connect to host 192.0.2.7 port 22: Connection refused\r\n"), Cause::refusedConnection,
         "web refuses connections. Its ssh server is not running, or listens on another port."},
        {failed("ssh: connect to host 192.0.2.7 port 22: Connection timed out\r\n"), Cause::timedOut,
         "web does not answer. It may be switched off, or a firewall may be in between."},
        {failed("Connection timed out during banner exchange\r\nConnection to 192.0.2.7 port 22 timed out\r\n"),
         Cause::timedOut, "web does not answer. It may be switched off, or a firewall may be in between."},
        {late("** WARNING: connection is not using a post-quantum key exchange algorithm.\r\n" +
              std::string(keyExchanged)),
         Cause::timedOut, "web did not finish the login in time. It may be busy; try again later."},
        {late(loggedIn), Cause::timedOut,
         "The shell of web does not answer. A start file such as .bashrc may wait, or start another program."},
        {failed("Unable to negotiate with 192.0.2.7 port 22: no matching host key type found. Their offer: "
                "ssh-rsa,ssh-dss\r\n"),
         Cause::noCommonAlgorithm,
         "ssh and web have no host key type in common. The host has only ssh-rsa,ssh-dss, which ~/.ssh/config would "
         "have to allow."},
        {failed("debug1: kex_exchange_identification: banner line 0: HTTP/1.0 400 Bad Request\r\n"
                "kex_exchange_identification: Connection closed by remote host\r\n"
                "Connection closed by 192.0.2.7 port 80\r\n"),
         Cause::notSSH, "What answers at web is no ssh server. Check the port in ~/.ssh/config."},
        {failed("debug1: kex_exchange_identification: banner line 0: Not allowed at this time\r\n"
                "kex_exchange_identification: read: Connection reset by peer\r\n"
                "Connection reset by 192.0.2.7 port 22\r\n"),
         Cause::closed, "The connection was closed at once. web says: Not allowed at this time"},
        {failed("kex_exchange_identification: Connection closed by remote host\r\n"
                "Connection closed by 192.0.2.7 port 22\r\n"),
         Cause::closed,
         "web closed the connection at once. It may have too many, or shut this computer out for a while."},
        {failed(std::string(keyExchanged) + "Connection closed by 192.0.2.7 port 22\r\n"), Cause::closed,
         "web closed the connection during the login. Try again later."},
        {failed(loggedIn, "This account is currently not available.\n"), Cause::noShell,
         "Your account has no shell. web says: This account is currently not available."},
        {failed(loggedIn, "This service allows sftp connections only.\n"), Cause::onlySftp,
         "web gives your account no shell, only sftp. Tarnwick needs a shell there."},
        {failed(std::string(loggedIn) + "bash: bash: command not found\n"), Cause::noBash,
         "web has no bash, which Tarnwick needs there. It has to be installed first."},
        {failed(std::string(loggedIn) + "sh: 1: bash: not found\n"), Cause::noBash,
         "web has no bash, which Tarnwick needs there. It has to be installed first."},
        {failed("debug1: Authentication succeeded (publickey).\r\n"), Cause::endedShell,
         "The shell of web ended before it answered. A start file such as .bashrc may end it."},
        {failed(loggedIn, "Maintenance until 5 o'clock.\nAsk Ben.\nOr Ann.\n"), Cause::endedShell,
         "The shell ended before it answered. web says: Maintenance until 5 o'clock. Ask Ben.…"},
        {failed("/home/ann/.ssh/config: line 3: Bad configuration option: foobar\r\n"
                "/home/ann/.ssh/config: terminating, 1 bad configuration options\r\n"),
         Cause::badConfiguration,
         "ssh does not accept its configuration: /home/ann/.ssh/config: line 3: Bad configuration option: foobar"},
        {failed("/home/ann/.ssh/config line 1: Bad port 'abc'.\r\n"
                "/home/ann/.ssh/config: terminating, 1 bad configuration options\r\n"),
         Cause::badConfiguration,
         "ssh does not accept its configuration: /home/ann/.ssh/config line 1: Bad port 'abc'."},
        {failed("Bad owner or permissions on /home/ann/.ssh/config\r\n"), Cause::badConfiguration,
         "ssh does not accept its configuration: Bad owner or permissions on /home/ann/.ssh/config"},
        {failed("ssh: connect to host gate port 22: Connection refused\r\n"
                "kex_exchange_identification: Connection closed by remote host\r\n"
                "Connection closed by UNKNOWN port 65535\r\n"),
         Cause::refusedConnection,
         "The jump host or proxy on the way to web failed. It says: ssh: connect to host gate port 22: Connection "
         "refused"},
        {failed("ann@gate: Permission denied (publickey,password).\r\n"
                "kex_exchange_identification: Connection closed by remote host\r\n"
                "Connection closed by UNKNOWN port 65535\r\n"),
         Cause::needsAnswers,
         "The jump host or proxy on the way to web failed. It says: ann@gate: Permission denied (publickey,password). "
         "Log in to answer its questions."},
        {failed("/bin/bash: line 1: /no/such/program: No such file or directory\n"
                "kex_exchange_identification: Connection closed by remote host\r\n"
                "Connection closed by UNKNOWN port 65535\r\n"),
         Cause::closed,
         "The jump host or proxy on the way to web failed. It says: /bin/bash: line 1: /no/such/program: No such file "
         "or directory"},
        {failed("Warning: Permanently added 'gate' (ED25519) to the list of known hosts.\r\n"
                "channel 0: open failed: connect failed: Name or service not known\r\n"
                "stdio forwarding failed\r\n"
                "kex_exchange_identification: Connection closed by remote host\r\n"
                "Connection closed by UNKNOWN port 65535\r\n"),
         Cause::noSession, "The jump host does not reach web: Name or service not known."},
        {failed(std::string(loggedIn) + "channel 0: open failed: connect failed: open failed\r\n"), Cause::noSession,
         "web lets you in, but opens no session. It may have too many; try again later."},
        {failed("/home/ann/.ssh/config line 3: Bad Match condition\r\n"), Cause::badConfiguration,
         "ssh does not accept its configuration: /home/ann/.ssh/config line 3: Bad Match condition"},
        {{"web", "this version speaks to hosts with a POSIX shell only"},
         Cause::windows,
         "web runs Windows. Folders of such hosts cannot be shown yet."},
        {{"web", "could not launch ssh: No such file or directory"},
         Cause::noSSH,
         "ssh could not be started: No such file or directory. Install the OpenSSH client."},
        {{"web", "the login was cancelled"},
         Cause::cancelledLogin,
         "The login to web was cancelled. Log in to be asked again."},
        {{"web", "three answers were not accepted", failed(keyExchanged).report},
         Cause::wrongAnswers,
         "web accepted none of three answers. Log in to try again."},
        {{"web", "a start file replaces the shell"},
         Cause::replacedShell,
         "A start file on web replaces the shell by another program. Let it do so only in terminals."},
        {{"web", "ann@web: Permission denied (publickey,password). (the key store with the password of this host is "
                 "locked)"},
         Cause::lockedKeyStore,
         "The password for web is in a key store that is locked. Unlock it, or log in."},
        {failed(loggedIn, "ssh: connect to host mail port 22: Connection refused\n"), Cause::endedShell,
         "The shell ended before it answered. web says: ssh: connect to host mail port 22: Connection refused"},
        {failed(std::string(loggedIn) + "Connection to 192.0.2.7 closed by remote host.\r\n"), Cause::closed,
         "web closed the connection before its shell answered. Try again."},
        {failed("something that no version has said so far\r\n"), Cause::unknown,
         "web could not be reached. The last words were: something that no version has said so far"},
        {failed(""), Cause::unknown, "web could not be reached. The details have what is known."},
    };
    return rows;
}

TEST(FailureSentencesTest, everyFailureOfAHostHasItsCauseAndItsSentences)
{
    for (auto const &row : table()) {
        EXPECT_EQ(HostFailure::of(row.error).cause, row.cause) << row.error.detail;
        EXPECT_EQ(failureSentences(HostFailure::of(row.error)).english(), row.sentences);
    }
}

TEST(FailureSentencesTest, aLoginIsOfferedWhereAnAnswerMayHelp)
{
    for (auto const &row : table()) {
        auto const actions = HostWording::failure(std::make_exception_ptr(row.error), "web", "/").actions;
        bool const mayHelp = HostFailure::of(row.error).canLogIn();
        if (row.cause == Cause::changedKey)
            EXPECT_THAT(actions, ElementsAre(Action::showKey, Action::retry, Action::details));
        else if (mayHelp)
            EXPECT_THAT(actions, ElementsAre(Action::logIn, Action::retry, Action::details));
        else
            EXPECT_THAT(actions, ElementsAre(Action::retry, Action::details));
        auto const needsAnswer = row.cause == Cause::unknownKey || row.cause == Cause::needsAnswers ||
                                 row.cause == Cause::needsPassphrase || row.cause == Cause::agentRefused ||
                                 row.cause == Cause::wrongPassword || row.cause == Cause::lockedKeyStore ||
                                 row.cause == Cause::noKey || row.cause == Cause::cancelledLogin ||
                                 row.cause == Cause::wrongAnswers;
        EXPECT_EQ(mayHelp, needsAnswer) << row.sentences;
    }
}

} // namespace
} // namespace tw::test
