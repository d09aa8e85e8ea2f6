#include "install/NSFileManager+ExtendedAttributes.h"

#include "foundation/MessageText.h"
#include "foundation/PathString.h"
#include "install/AuthorizationExecuteWithPrivilegesAndWait.h"
#include "platform/Platform.h"

#include <algorithm>

namespace path = foundation::path;

namespace NSFileManager::ExtendedAttributes {

namespace {

using foundation::Error;
using foundation::format;

constexpr const char* errorDomain = "TXPluginsInstallerErrorDomain";
constexpr std::int64_t copyError = 4000;
constexpr std::int64_t authenticationError = 4001;

struct PrivilegedCommand {
    std::string tool;
    std::vector<std::string> arguments;
};

bool fail(ErrorOut error, std::int64_t code, std::string description) {
    if (error != nullptr)
        *error = Error::withDescription(errorDomain, code, std::move(description));
    return false;
}

std::shared_ptr<platform::AuthorizationRef> createAuthorization() {
    std::shared_ptr<platform::AuthorizationRef> authorization;
    std::int32_t status = platform::Authorization::denied;
    // Deliberate: a denial is asked again at once, for as long as it lasts.
    while (status == platform::Authorization::denied)
        status = platform::current().authorization->create(authorization);
    return status == platform::Authorization::success ? authorization : nullptr;
}

// The owner that the new item gets: the old one's, and without an old one this user's own.
std::string ownerText(const std::string& destination, const std::string& source) {
    auto owner = platform::current().fileQueries->ownerOfItem(destination);
    if (!owner)
        owner = platform::current().fileQueries->ownerOfItem(source);
    if (!owner)
        owner = platform::FileOwner{};
    return format("%@:%@", {std::to_string(static_cast<std::int32_t>(owner->userId)),
                            std::to_string(static_cast<std::int32_t>(owner->groupId))});
}

bool replaceWithPrivileges(const std::string& source, const std::string& destination,
                           const std::vector<PrivilegedCommand>& commands, ErrorOut error) {
    const std::string owner = ownerText(destination, source);
    const auto moved = platform::current().fileQueries->identityOfItem(source);
    const auto authorization = createAuthorization();
    if (!authorization)
        return fail(error, authenticationError, "Couldn't get permission to authenticate.");
    const auto run = [&](const PrivilegedCommand& command) {
        return AuthorizationExecuteWithPrivilegesAndWait(*authorization, command.tool, command.arguments);
    };
    // The tool that moves also moves into a folder that has appeared at the destination, and calls that a success.
    const auto hasArrived = [&] {
        const auto found = platform::current().fileQueries->identityOfItem(destination);
        return moved && found && isSameItem(*moved, *found);
    };
    bool succeeded = std::all_of(commands.begin(), commands.end(), run) && hasArrived();
    if (succeeded) {
        releaseFromQuarantine(destination);
        succeeded = run({"/usr/sbin/chown", {"-R", owner, destination}});
    }
    if (succeeded)
        return true;
    return fail(error, authenticationError,
                format("Authenticated file copy from %@ to %@ failed.", {source, destination}));
}

bool destroy(const std::string& item) {
    return platform::current().workspace->destroyFiles(path::deletingLastPathComponent(item),
                                                       {path::lastPathComponent(item)});
}

// Deliberate: the messages speak of the trash, although the items are deleted at once, and both name the destination.
bool failToRemoveOld(const std::string& destination, const std::string& temporaryPath, ErrorOut error) {
    const auto complain = [&](const char* place) {
        platform::current().console->log(
            format("Sparkle error: couldn't move %@ to the trash [%@]. This is often a sign of a permissions error.",
                   {destination, place}));
    };
    complain("1");
    if (!destroy(temporaryPath))
        complain("2");
    return fail(error, copyError, format("Couldn't move %@ to the trash.", {destination}));
}

} // namespace

bool copyPathWithForcedAuthenticationWithoutTmpFile(const std::string& source, const std::string& toPath,
                                                    ErrorOut error) {
    return replaceWithPrivileges(source, toPath, {{"/bin/rm", {"-rf", toPath}}, {"/bin/mv", {"-f", source, toPath}}},
                                 error);
}

bool _copyPathWithForcedAuthentication(const std::string& source, const std::string& toPath, ErrorOut error) {
    const std::string temporaryPath = _temporaryCopyNameForPath(toPath);
    return replaceWithPrivileges(source, toPath,
                                 {{"/bin/rm", {"-rf", temporaryPath}},
                                  {"/bin/mv", {"-f", toPath, temporaryPath}},
                                  {"/bin/mv", {"-f", source, toPath}},
                                  {"/bin/rm", {"-rf", temporaryPath}}},
                                 error);
}

bool copyPathWithAuthentication(const std::string& source, const std::string& overPath, ErrorOut error) {
    platform::FileQueries& queries = *platform::current().fileQueries;
    platform::FileChanges& changes = *platform::current().fileChanges;
    if (!queries.fileExists(overPath)) {
        return fail(error, copyError,
                    format("Couldn't copy %@ over %@ because there is no file at %@.", {source, overPath, overPath}));
    }
    const std::string folder = path::deletingLastPathComponent(overPath);
    if (!queries.isWritableFile(overPath) || !queries.isWritableFile(folder))
        return _copyPathWithForcedAuthentication(source, overPath, error);
    const std::string temporaryPath = _temporaryCopyNameForPath(overPath);
    if (const auto leftovers = _temporaryFailedCopiesForPath(overPath))
        platform::current().workspace->destroyFiles(folder, *leftovers);
    std::optional<Error> reason;
    if (!changes.copyItem(source, temporaryPath, &reason)) {
        return fail(error, copyError,
                    format("Couldn't copy %@ to %@. Error: %@", {source, temporaryPath, textOf(reason)}));
    }
    if (!destroy(overPath))
        return failToRemoveOld(overPath, temporaryPath, error);
    if (!changes.moveItem(temporaryPath, overPath, &reason)) {
        return fail(error, copyError,
                    format("Couldn't move %@ to %@. Error: %@", {temporaryPath, overPath, textOf(reason)}));
    }
    releaseFromQuarantine(overPath);
    return true;
}

} // namespace NSFileManager::ExtendedAttributes
