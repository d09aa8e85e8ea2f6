#include "install/AuthorizationExecuteWithPrivilegesAndWait.h"
#include "install/NSFileManager+ExtendedAttributes.h"
#include "tests/unit/CoreTest.h"

// The privileged command tables with every command failing in turn, the plain replacement, and the names of temporary
// copies. How rights are really asked for is the platform's.

namespace manager = NSFileManager::ExtendedAttributes;

namespace {

const std::string source = "/tmp/me/new/Tolvix.app";
const std::string product = "/Applications/Tolvix.app";
const std::string temporary = "/Applications/Tolvix (1.2.3).app";
const std::string quarantine = "com.apple.quarantine";

struct Operation {
    const char* name;
    bool (*run)(const std::string& source, const std::string& toPath, manager::ErrorOut error);
    Texts commands;
};
const Operation operations[] = {
    {"deleting the old one first",
     manager::copyPathWithForcedAuthenticationWithoutTmpFile,
     {"/bin/rm -rf " + product, "/bin/mv -f " + source + " " + product, "/usr/sbin/chown -R 501:20 " + product}},
    {"keeping the old one aside",
     manager::_copyPathWithForcedAuthentication,
     {"/bin/rm -rf " + temporary, "/bin/mv -f " + product + " " + temporary, "/bin/mv -f " + source + " " + product,
      "/bin/rm -rf " + temporary, "/usr/sbin/chown -R 501:20 " + product}}};

// An old product, and a new one with the mark of a download.
class CopyWorld : public CoreWorld {
public:
    CopyWorld() {
        system.files.addFile(source + "/new");
        system.files.item(source)->attributes.insert(quarantine);
        system.files.addFile(product + "/old");
        system.bundles.others[product] = {{"CFBundleVersion", foundation::Value("1.2.3")}};
    }

    // "done", or the error.
    std::string run(bool (*operation)(const std::string&, const std::string&, manager::ErrorOut)) {
        std::optional<foundation::Error> error;
        if (operation(source, product, &error))
            return "done";
        return error->domain + " " + std::to_string(error->code) + " " +
               error->userInfo.at(foundation::localizedDescriptionKey).description();
    }
    std::string replace() { return run(manager::copyPathWithAuthentication); }
    bool isReplaced() { return system.files.has(product + "/new") && !system.files.has(product + "/old"); }
    bool isReleased() { return system.files.item(product)->attributes.count(quarantine) == 0; }
};

} // namespace

class AuthenticatedCopyTest : public testing::Test, public CopyWorld {};

TEST_F(AuthenticatedCopyTest, PrivilegedCommandsRunInOrderBetweenTheSignalChanges) {
    for (const Operation& operation : operations) {
        SCOPED_TRACE(operation.name);
        CopyWorld world;
        EXPECT_EQ(world.run(operation.run), "done");
        EXPECT_EQ(world.system.authorization.commands, operation.commands);
        EXPECT_TRUE(world.isReplaced());
        EXPECT_TRUE(world.isReleased());
        EXPECT_FALSE(world.system.authorization.isHeld());
        Texts events;
        for (std::size_t i = 0; i < operation.commands.size(); ++i) {
            events.insert(events.end(), {"default", "run", "wait", "restore"});
        }
        EXPECT_EQ(world.system.authorization.events, events);
    }
}

TEST_F(AuthenticatedCopyTest, TheFirstFailingCommandIsTheLast) {
    for (const Operation& operation : operations) {
        for (std::size_t failing = 1; failing <= operation.commands.size(); ++failing) {
            for (const bool starts : {true, false}) {
                SCOPED_TRACE(operation.name + (": command " + std::to_string(failing)) +
                             (starts ? " fails" : " is missing"));
                CopyWorld world;
                const int number = static_cast<int>(failing);
                world.system.authorization.waitResults[starts ? number : 0] = 1 << 8;
                world.system.authorization.unstartable = starts ? 0 : number;
                EXPECT_EQ(world.run(operation.run), "TXPluginsInstallerErrorDomain 4001 Authenticated file copy from " +
                                                        source + " to " + product + " failed.");
                EXPECT_EQ(world.system.authorization.commands.size(), failing);
                EXPECT_EQ(world.system.authorization.events.back(), "restore");
                EXPECT_FALSE(world.system.authorization.isHeld());
                const bool isOwnerCommand = failing == operation.commands.size();
                EXPECT_EQ(!world.system.files.changes.empty(), isOwnerCommand)
                    << "the mark goes between moves and owner";
            }
        }
    }
}

// Deliberate in the program: a denial is asked again at once.
TEST_F(AuthenticatedCopyTest, DenialsAreAskedAgainAndOtherRefusalsAreNot) {
    system.authorization.denials = 2;
    EXPECT_EQ(run(operations[0].run), "done");
    EXPECT_EQ(system.authorization.requests, 3);
    for (const Operation& operation : operations) {
        SCOPED_TRACE(operation.name);
        CopyWorld world;
        world.system.authorization.status = -60008;
        EXPECT_EQ(world.run(operation.run),
                  "TXPluginsInstallerErrorDomain 4001 Couldn't get permission to authenticate.");
        EXPECT_EQ(world.system.authorization.requests, 1);
        EXPECT_TRUE(world.system.authorization.events.empty());
        EXPECT_FALSE(operation.run(source, product, nullptr));
    }
}

TEST_F(AuthenticatedCopyTest, TheOwnerIsTheOldItemsFromBeforeTheCommands) {
    using Owner = platform::FileOwner;
    const std::pair<Owner, std::string> rows[] = {{Owner{0, 0}, "0:0"},
                                                  {Owner{501, 80}, "501:80"},
                                                  {Owner{4294967294U, 4294967295U}, "-2:-1"},
                                                  {Owner{2147483648U, 2147483647U}, "-2147483648:2147483647"}};
    for (const auto& [owner, text] : rows) {
        SCOPED_TRACE(text);
        CopyWorld world;
        world.system.files.item(product)->owner = owner;
        world.run(operations[0].run);
        EXPECT_EQ(world.system.authorization.commands.back(), "/usr/sbin/chown -R " + text + " " + product);
    }
    system.files.removeTree(product);
    EXPECT_EQ(run(operations[0].run), "done") << "a missing old one does not stop the commands";
}

// Deliberate in the program: whichever child ends first is taken for the tool, so its status alone decides.
TEST_F(AuthenticatedCopyTest, TheWaitStatusDecides) {
    struct Row {
        const char* name;
        std::optional<int> status;
        bool succeeded;
    };
    const Row rows[] = {{"exit 0", 0, true},        {"core-dump bit alone", 0x80, true},
                        {"exit 1", 0x100, false},   {"exit 255", 0xFF00, false},
                        {"signal", 9, false},       {"signal with a core dump", 0x8B, false},
                        {"stopped", 0x137F, false}, {"no child", {}, false}};
    platform::AuthorizationRef authorization;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        system.authorization.commands.clear();
        system.authorization.waitResults[1] = row.status;
        EXPECT_EQ(AuthorizationExecuteWithPrivilegesAndWait(authorization, "/bin/ls", {}), row.succeeded);
    }
    system.authorization.events.clear();
    system.authorization.unstartable = 2;
    EXPECT_FALSE(AuthorizationExecuteWithPrivilegesAndWait(authorization, "/bin/ls", {}));
    EXPECT_EQ(system.authorization.events, (Texts{"default", "run", "restore"})) << "no other child may be reaped";
}

TEST_F(AuthenticatedCopyTest, AWritableProductIsReplacedWithoutRights) {
    system.files.addFile("/Applications/Tolvix (1.2.2).app/left");
    EXPECT_EQ(replace(), "done");
    EXPECT_TRUE(isReplaced());
    EXPECT_TRUE(isReleased());
    EXPECT_EQ(system.files.contentsOfDirectory("/Applications"), Texts{"Tolvix.app"}) << "leftovers go as well";
    EXPECT_TRUE(system.files.has(source)) << "the source is copied, not moved";
    EXPECT_EQ(system.authorization.requests, 0);
}

TEST_F(AuthenticatedCopyTest, AProductOrFolderThatCannotBeWrittenTakesRights) {
    for (const std::string& protectedItem : {product, std::string("/Applications")}) {
        SCOPED_TRACE(protectedItem);
        CopyWorld world;
        world.system.files.item(protectedItem)->writable = false;
        EXPECT_EQ(world.replace(), "done");
        EXPECT_EQ(world.system.authorization.commands, operations[1].commands);
        EXPECT_TRUE(world.system.workspace.requests.empty());
    }
}

TEST_F(AuthenticatedCopyTest, EveryFailureOfThePlainReplacementIsNamed) {
    const auto because = [](const std::string& path) {
        return ". Error: Error Domain=Files Code=513 \"no " + path + "\" UserInfo={NSLocalizedDescription=no " + path +
               "}";
    };
    const std::string domain = "TXPluginsInstallerErrorDomain 4000 ";
    CopyWorld moving;
    moving.system.files.failAt(FakeFiles::Operation::Move, temporary);
    EXPECT_EQ(moving.replace(), domain + "Couldn't move " + temporary + " to " + product + because(temporary));

    CopyWorld copying;
    copying.system.files.failAt(FakeFiles::Operation::Copy, source);
    EXPECT_EQ(copying.replace(), domain + "Couldn't copy " + source + " to " + temporary + because(source));
    EXPECT_TRUE(copying.system.files.has(product + "/old"));

    CopyWorld empty;
    empty.system.files.removeTree(product);
    EXPECT_EQ(empty.replace(), domain + "Couldn't copy " + source + " over " + product +
                                   " because there is no file at " + product + ".");
    EXPECT_TRUE(empty.system.files.changes.empty());
    EXPECT_FALSE(manager::copyPathWithAuthentication(source, product, nullptr));
}

// Deliberate in the program: the messages speak of the trash, and both name the destination.
TEST_F(AuthenticatedCopyTest, AProductThatCannotBeDeletedKeepsItsPlace) {
    const auto complaint = [](const std::string& number) {
        return "Sparkle error: couldn't move " + product + " to the trash [" + number +
               "]. This is often a sign of a permissions error.";
    };
    for (const bool temporaryGoes : {true, false}) {
        SCOPED_TRACE(temporaryGoes ? "the temporary copy goes" : "the temporary copy stays");
        CopyWorld world;
        world.system.workspace.indestructible.insert(product);
        if (!temporaryGoes)
            world.system.workspace.indestructible.insert(temporary);
        EXPECT_EQ(world.replace(), "TXPluginsInstallerErrorDomain 4000 Couldn't move " + product + " to the trash.");
        Texts complaints{complaint("1")};
        if (!temporaryGoes)
            complaints.push_back(complaint("2"));
        EXPECT_EQ(world.system.console.messages, complaints);
        EXPECT_EQ(world.system.files.has(temporary), !temporaryGoes);
        EXPECT_TRUE(world.system.files.has(product + "/old"));
    }
}

TEST_F(AuthenticatedCopyTest, TemporaryCopiesAreNamedAfterTheVersion) {
    const std::pair<const char*, std::string> rows[] = {{"1.2.3", "(1.2.3)"},
                                                        {"1.2.3 ", "(1.2.3)"},
                                                        {" _1.2 b_ ", "(1.2 b)"},
                                                        {"-(1)-", "(-(1)-)"},
                                                        {"\xC3\xA9"
                                                         "1\xC2\xA0",
                                                         "(\xC3\xA9"
                                                         "1)"},
                                                        {"\xE2\x80\x9C"
                                                         "2\xE2\x80\x9D",
                                                         "(2)"},
                                                        {"___", "()"}};
    for (const auto& [version, text] : rows) {
        SCOPED_TRACE(text);
        system.bundles.others[product] = {{"CFBundleVersion", foundation::Value(version)}};
        EXPECT_EQ(manager::_temporaryCopyNameForPath(product), "/Applications/Tolvix " + text + ".app");
    }
    system.bundles.others[product].clear();
    EXPECT_EQ(manager::_temporaryCopyNameForPath(product), "/Applications/Tolvix ((null)).app");
    EXPECT_EQ(manager::_temporaryCopyNameForPath(product + "/old"), product + "/old (old)");
    EXPECT_EQ(manager::_temporaryCopyNameForPath("/Applications/None.app"), "/Applications/None (old).app");
}

TEST_F(AuthenticatedCopyTest, ATakenTemporaryNameIsCountedUp) {
    system.files.addFile(temporary);
    EXPECT_EQ(manager::_temporaryCopyNameForPath(product), "/Applications/Tolvix (1.2.3) 2.app");
    system.files.addFolder("/Applications/Tolvix (1.2.3) 2.app");
    EXPECT_EQ(manager::_temporaryCopyNameForPath(product), "/Applications/Tolvix (1.2.3) 3.app");
    system.files.everythingExists = true;
    EXPECT_EQ(manager::_temporaryCopyNameForPath(product), "/Applications/Tolvix (1.2.3) 999999.app");
}

// Deliberate in the program: only digits and dots count in the parentheses, and the bundle's name is a pattern itself.
TEST_F(AuthenticatedCopyTest, LeftoversAreThoseWithAPlainVersion) {
    struct Row {
        std::string bundle;
        std::string entry;
        bool found;
    };
    const Row rows[] = {{"Tolvix", "Tolvix (1.2.3).app", true},
                        {"Tolvix", "Tolvix (1.2.3) 2.app", true},
                        {"Tolvix", "Tolvix (..)", true},
                        {"Tolvix", "Tolvix (old).app", false},
                        {"Tolvix", "Tolvix (1.2b).app", false},
                        {"Tolvix", "Tolvix ().app", false},
                        {"Tolvix", "My Tolvix (1).app", false},
                        {"Tolvix", "tolvix (1).app", false},
                        {"Tol.ix", "Tolvix (1).app", true},
                        {"T+", "TTT (1).app", true},
                        {"T+", "T+ (1).app", false},
                        {"Tolvix (x", "Tolvix (x (1).app", false},
                        {"T\xC3\xB6lvix", "T\xC3\xB6lvix (1).app", true}};
    for (const auto& [bundle, entry, found] : rows) {
        SCOPED_TRACE(bundle + " and " + entry);
        FakePlatform fresh;
        fresh.files.addFolder("/Applications/" + entry);
        EXPECT_EQ(manager::_temporaryFailedCopiesForPath("/Applications/" + bundle + ".app"),
                  found ? std::optional(Texts{entry}) : std::nullopt);
    }
    EXPECT_EQ(manager::_temporaryFailedCopiesForPath("/missing/Tolvix.app"), std::nullopt);
}
