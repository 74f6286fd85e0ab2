#include "TWEngine/Applications/DesktopApplications.h"

#include "TWCore/Model/ReadError.h"
#include "TWEngine/Applications/ApplicationError.h"
#include "TWEngine/Applications/DesktopExec.h"
#include "TWEngine/Browsing/LocalProviderError.h"
#include "TWEngine/Platform/GObjectReference.h"
#include "TWEngine/Platform/Scratch.h"
#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Runtime/WholeFile.h"

#include <gio/gdesktopappinfo.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>

namespace tw {

namespace {

using Info = GObjectReference<GDesktopAppInfo>;

struct FreeText {
    void operator()(char *text) const noexcept { g_free(text); }
};

std::string textOrNothing(char const *text)
{
    return text ? text : "";
}

/// Takes the text.
std::string taken(char *text)
{
    std::unique_ptr<char, FreeText> const owned(text);
    return textOrNothing(owned.get());
}

std::string contentTypeOf(std::string const &name, std::string_view beginning)
{
    auto type = taken(g_content_type_guess(name.c_str(), reinterpret_cast<guchar const *>(beginning.data()),
                                           beginning.size(), nullptr));
    // An empty file is mostly one that is to be written.
    return type == "application/x-zerosize" ? "text/plain" : type;
}

std::string nameIn(std::string const &path)
{
    return path.substr(path.rfind('/') + 1);
}

FileNature natureNow(std::string const &path, std::uint16_t modeThere)
{
    // Not blocking: a pipe with nobody at its other end would hold a worker without end.
    FileDescriptor const file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    struct stat status;
    if (!file || ::fstat(file.get(), &status) != 0)
        throw ReadError::NotReadable(path, systemText(errno));
    if (!S_ISREG(status.st_mode))
        throw ApplicationError::NothingOpens(path);
    std::string beginning;
    if (auto const error = WholeFile::readUpTo(file.get(), beginningOfFile, beginning); error != 0)
        throw ReadError::NotReadable(path, systemText(error));
    auto const name = nameIn(path);
    return FileNature::of({.name = name,
                           .beginning = beginning,
                           .contentType = contentTypeOf(name, beginning),
                           .mode = static_cast<std::uint16_t>((status.st_mode & ACCESSPERMS) | modeThere),
                           .isMarkedAsFetched = Scratch::isMarkedAsFetched(path)});
}

std::string keywordsOf(GDesktopAppInfo *info)
{
    std::string words = textOrNothing(g_desktop_app_info_get_generic_name(info));
    auto const *const *const keywords = g_desktop_app_info_get_keywords(info);
    for (auto const *const *each = keywords; each && *each; ++each)
        words += std::string(" ") + *each;
    return words;
}

Application applicationOf(GAppInfo *info)
{
    Application found{.identifier = textOrNothing(g_app_info_get_id(info)),
                      .name = textOrNothing(g_app_info_get_display_name(info))};
    if (G_IS_DESKTOP_APP_INFO(info)) {
        auto *const entry = G_DESKTOP_APP_INFO(info);
        found.icon = taken(g_desktop_app_info_get_string(entry, "Icon"));
        found.keywords = keywordsOf(entry);
    }
    return found;
}

/// Takes the list.
std::vector<Application> listOf(GList *infos)
{
    std::vector<Application> all;
    for (auto const *each = infos; each; each = each->next) {
        auto application = applicationOf(G_APP_INFO(each->data));
        if (!application.identifier.empty())
            all.push_back(std::move(application));
    }
    g_list_free_full(infos, g_object_unref);
    return all;
}

std::vector<Application> applicationsFor(std::string const &contentType)
{
    auto all = listOf(g_app_info_get_all_for_type(contentType.c_str()));
    GObjectReference<GAppInfo> const usual(g_app_info_get_default_for_type(contentType.c_str(), FALSE));
    if (!usual)
        return all;
    auto first = applicationOf(usual.get());
    std::erase_if(all, [&](auto const &each) { return each.identifier == first.identifier; });
    first.isDefault = true;
    all.insert(all.begin(), std::move(first));
    return all;
}

std::vector<Application> allApplications()
{
    auto *infos = g_app_info_get_all();
    GList *shown = nullptr;
    for (auto const *each = infos; each; each = each->next) {
        if (g_app_info_should_show(G_APP_INFO(each->data)))
            shown = g_list_prepend(shown, g_object_ref(each->data));
    }
    g_list_free_full(infos, g_object_unref);
    auto all = listOf(shown);
    std::ranges::sort(all,
                      [](auto const &a, auto const &b) { return g_utf8_collate(a.name.c_str(), b.name.c_str()) < 0; });
    return all;
}

bool isInstalled(std::string const &program)
{
    return !taken(g_find_program_in_path(program.c_str())).empty();
}

/// The environment of a program of the user's. The token is for the program that is started and for no other.
Environment environmentWith(std::string const &activationToken)
{
    auto environment = inheritedEnvironment();
    for (auto const *const name : {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"}) {
        environment.erase(name);
        if (!activationToken.empty())
            environment[name] = activationToken;
    }
    return environment;
}

void start(EngineRuntime &engine, std::string const &name, std::vector<std::string> command, std::string folder,
           std::string const &activationToken)
{
    if (command.empty())
        throw ApplicationError::CannotStart(name, "its desktop entry has no command that can be run");
    ChildCommand child{
        .program = command.front(),
        .arguments = {std::make_move_iterator(command.begin() + 1), std::make_move_iterator(command.end())},
        .environment = environmentWith(activationToken),
        .workingDirectory = std::move(folder),
        .session = ChildCommand::Session::own};
    auto const started = ChildProcess::start(engine.io(), child);
    if (!started)
        throw ApplicationError::CannotStart(name, started.error().what());
    // It is the user's: it may outlive this process, and nothing here waits for its end.
    (*started)->leave();
}

std::vector<std::string> inTerminal(std::string const &name, std::vector<std::string> command)
{
    command = DesktopExec::inTerminal(std::move(command), isInstalled);
    if (command.empty())
        throw ApplicationError::CannotStart(name, "it needs a terminal, and there is none");
    return command;
}

/// What an entry says, as a command.
void startEntry(EngineRuntime &engine, GDesktopAppInfo *info, std::optional<std::string> const &path,
                std::string const &activationToken)
{
    std::string const name = textOrNothing(g_app_info_get_display_name(G_APP_INFO(info)));
    DesktopExec::Entry const entry{.exec = textOrNothing(g_app_info_get_commandline(G_APP_INFO(info))),
                                   .name = name,
                                   .icon = taken(g_desktop_app_info_get_string(info, "Icon")),
                                   .file = textOrNothing(g_desktop_app_info_get_filename(info)),
                                   .wantsTerminal = g_desktop_app_info_get_boolean(info, "Terminal") != FALSE};
    auto command = DesktopExec::commandLine(entry, path);
    if (entry.wantsTerminal && !command.empty())
        command = inTerminal(name, std::move(command));
    start(engine, name, std::move(command), taken(g_desktop_app_info_get_string(info, "Path")), activationToken);
}

Application openNow(EngineRuntime &engine, Applications::Opening const &opening)
{
    Info info;
    if (!opening.application.empty()) {
        info.reset(g_desktop_app_info_new(opening.application.c_str()));
        if (!info)
            throw ApplicationError::CannotStart(opening.application, "it is not installed");
    } else {
        GObjectReference<GAppInfo> usual(g_app_info_get_default_for_type(opening.contentType.c_str(), FALSE));
        if (!usual || !G_IS_DESKTOP_APP_INFO(usual.get()))
            throw ApplicationError::NothingOpens(opening.path);
        info.reset(G_DESKTOP_APP_INFO(usual.release()));
    }
    startEntry(engine, info.get(), opening.path, opening.activationToken);
    return applicationOf(G_APP_INFO(info.get()));
}

void runNow(EngineRuntime &engine, std::string const &path, FileNature::Kind kind, std::string const &activationToken)
{
    auto const name = nameIn(path);
    if (kind == FileNature::Kind::launcher) {
        Info const info(g_desktop_app_info_new_from_filename(path.c_str()));
        if (!info)
            throw ApplicationError::CannotStart(name, "it starts no program that is installed");
        return startEntry(engine, info.get(), std::nullopt, activationToken);
    }
    std::vector<std::string> command{path};
    // What a script says is seen in a terminal only.
    if (kind == FileNature::Kind::script) {
        if (auto shown = DesktopExec::inTerminal(command, isInstalled); !shown.empty())
            command = std::move(shown);
    }
    start(engine, name, std::move(command), std::filesystem::path(path).parent_path(), activationToken);
}

} // namespace

Task<FileNature> DesktopApplications::natureOf(std::string path, std::uint16_t modeThere)
{
    return runtime.files().run(path, FileLanes::LastLink::follow, WorkPriority::interactive,
                               [path, modeThere](std::string const & /*place*/) { return natureNow(path, modeThere); });
}

Task<FileNature> DesktopApplications::natureOfBeginning(std::string name, std::string beginning, std::uint16_t mode)
{
    return runtime.workers().run(
        WorkPriority::interactive, [name = std::move(name), beginning = std::move(beginning), mode] {
            return FileNature::of(
                {.name = name, .beginning = beginning, .contentType = contentTypeOf(name, beginning), .mode = mode});
        });
}

Task<std::vector<Application>> DesktopApplications::forType(std::string contentType)
{
    return runtime.workers().run(WorkPriority::interactive,
                                 [type = std::move(contentType)] { return applicationsFor(type); });
}

Task<std::vector<Application>> DesktopApplications::forName(std::string name)
{
    return runtime.workers().run(WorkPriority::interactive,
                                 [name = std::move(name)] { return applicationsFor(contentTypeOf(name, {})); });
}

Task<std::vector<Application>> DesktopApplications::all()
{
    return runtime.workers().run(WorkPriority::interactive, allApplications);
}

Task<Application> DesktopApplications::open(Opening opening)
{
    return runtime.workers().run(WorkPriority::interactive, [engine = &runtime, opening = std::move(opening)] {
        return openNow(*engine, opening);
    });
}

Task<void> DesktopApplications::runInTerminal(std::string name, std::vector<std::string> command,
                                              std::string activationToken)
{
    return runtime.workers().run(
        WorkPriority::interactive,
        [engine = &runtime, name = std::move(name), command = std::move(command), token = std::move(activationToken)] {
            start(*engine, name, inTerminal(name, command), {}, token);
        });
}

Task<void> DesktopApplications::run(std::string path, FileNature::Kind kind, std::string activationToken)
{
    return runtime.workers().run(WorkPriority::interactive,
                                 [engine = &runtime, path = std::move(path), kind, token = std::move(activationToken)] {
                                     runNow(*engine, path, kind, token);
                                 });
}

} // namespace tw
