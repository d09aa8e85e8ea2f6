#include "install/AuthorizationExecuteWithPrivilegesAndWait.h"
#include "install/NSFileManager+ExtendedAttributes.h"
#include "tests/unit/RecordingDelegate.h"

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
        return operation(source, product, &error) ? "done" : shortText(*error);
    }
    std::string replace() { return run(manager::copyPathWithAuthentication); }
    bool isReplaced() { return system.files.has(product + "/new") && !system.files.has(product + "/old"); }
    bool isReleased() { return system.files.item(product)->attributes.count(quarantine) == 0; }
};

} // namespace

class AuthenticatedCopyTest : public testing::Test, public CopyWorld {};

TEST_F(AuthenticatedCopyTest, PrivilegedCommandsRunInOrderUpToTheFirstFailure) {
    const std::string failure =
        "TXPluginsInstallerErrorDomain 4001 Authenticated file copy from " + source + " to " + product + " failed.";
    for (const Operation& operation : operations) {
        const int count = static_cast<int>(operation.commands.size());
        for (int failing = 1; failing <= count + 1; ++failing) {
            SCOPED_TRACE(operation.name + (", command " + std::to_string(failing) + " fails"));
            CopyWorld world;
            FakeAuthorization& rights = world.system.authorization;
            rights.waitResults[failing] = 1 << 8;
            const bool succeeds = failing > count;
            EXPECT_EQ(world.run(operation.run), succeeds ? "done" : failure);
            const int ran = std::min(failing, count);
            EXPECT_EQ(rights.commands, Texts(operation.commands.begin(), operation.commands.begin() + ran));
            Texts events;
            for (int command = 0; command < ran; ++command)
                events.insert(events.end(), {"default", "run", "wait", "restore"});
            EXPECT_EQ(rights.events, events);
            EXPECT_FALSE(rights.isHeld());
            EXPECT_EQ(world.system.files.changes.empty(), failing < count) << "the mark goes between moves and owner";
            EXPECT_TRUE(!succeeds || (world.isReplaced() && world.isReleased()));
        }
    }
}

TEST_F(AuthenticatedCopyTest, AMoveIntoAFolderThatReappearedIsNoSuccess) {
    system.authorization.observer = [this](const std::string& command) {
        if (command.rfind("/bin/rm", 0) == 0)
            system.files.addFile(product + "/new");
    };
    EXPECT_NE(run(operations[0].run), "done");
    EXPECT_TRUE(system.files.has(product + "/new"));
    EXPECT_EQ(system.authorization.commands.size(), 2U) << "not ours to give an owner";
}

// Deliberate in the program: a denial is asked again at once.
TEST_F(AuthenticatedCopyTest, DenialsAreAskedAgainAndOtherRefusalsAreNot) {
    system.authorization.denials = 2;
    EXPECT_EQ(run(operations[0].run), "done");
    EXPECT_EQ(system.authorization.requests, 3);
    system.authorization.status = -60008;
    EXPECT_EQ(run(operations[0].run), "TXPluginsInstallerErrorDomain 4001 Couldn't get permission to authenticate.");
    EXPECT_EQ(system.authorization.requests, 4);
    EXPECT_EQ(system.authorization.commands.size(), operations[0].commands.size());
    EXPECT_FALSE(operations[0].run(source, product, nullptr));
}

TEST_F(AuthenticatedCopyTest, TheOwnerIsTheOldItemsFromBeforeTheCommands) {
    using Owner = platform::FileOwner;
    for (const auto& [owner, text] :
         {std::pair(Owner{0, 0}, "0:0"), {Owner{501, 80}, "501:80"}, {Owner{4294967294U, 4294967295U}, "-2:-1"}}) {
        CopyWorld world;
        world.system.files.item(product)->owner = owner;
        world.run(operations[0].run);
        EXPECT_EQ(world.system.authorization.commands.back(),
                  std::string("/usr/sbin/chown -R ") + text + " " + product);
    }
    system.files.removeTree(product);
    EXPECT_EQ(run(operations[0].run), "done") << "a missing old one does not stop the commands";
}

// Deliberate in the program: whichever child ends first is taken for the tool, so its status alone decides.
TEST_F(AuthenticatedCopyTest, TheWaitStatusDecides) {
    // Exits, a core-dump bit alone, signals without and with it, a stop, and no child at all.
    const std::pair<std::optional<int>, bool> rows[] = {{0, true},  {0x80, true},  {0x100, false},  {0xFF00, false},
                                                        {9, false}, {0x8B, false}, {0x137F, false}, {{}, false}};
    platform::AuthorizationRef authorization;
    for (const auto& [status, succeeded] : rows) {
        system.authorization.commands.clear();
        system.authorization.waitResults[1] = status;
        EXPECT_EQ(AuthorizationExecuteWithPrivilegesAndWait(authorization, "/bin/ls", {}), succeeded)
            << status.value_or(-1);
    }
    system.authorization.events.clear();
    system.authorization.unstartable = 2;
    EXPECT_FALSE(AuthorizationExecuteWithPrivilegesAndWait(authorization, "/bin/ls", {}));
    EXPECT_EQ(system.authorization.events, (Texts{"default", "run", "restore"})) << "no other child may be reaped";
    system.authorization.events.clear();
    system.authorization.unthinkable = 3;
    EXPECT_ANY_THROW(AuthorizationExecuteWithPrivilegesAndWait(authorization, "/bin/ls", {}));
    EXPECT_EQ(system.authorization.events, (Texts{"default", "run", "restore"}));
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
    for (const char* protectedItem : {"/Applications/Tolvix.app", "/Applications"}) {
        CopyWorld world;
        world.system.files.item(protectedItem)->writable = false;
        world.replace();
        EXPECT_EQ(world.system.authorization.commands, operations[1].commands) << protectedItem;
    }
}

TEST_F(AuthenticatedCopyTest, AFailedPlainReplacementKeepsTheOldProduct) {
    const std::string failure = "TXPluginsInstallerErrorDomain 4000 Couldn't ";
    system.workspace.indestructible = {product, temporary};
    EXPECT_EQ(replace(), failure + "move " + product + " to the trash.");
    // Deliberate in the program: the messages speak of the trash, and both name the destination.
    const std::string complaint = "Sparkle error: couldn't move " + product + " to the trash [";
    const std::string reason = "]. This is often a sign of a permissions error.";
    EXPECT_EQ(system.console.messages, (Texts{complaint + "1" + reason, complaint + "2" + reason}));
    system.files.removeTree(temporary);
    system.workspace.indestructible = {product};
    replace();
    EXPECT_FALSE(system.files.has(temporary)) << "left behind";
    system.files.failAt(FakeFiles::Operation::Copy, source);
    EXPECT_EQ(replace(), failure + "copy " + source + " to " + temporary +
                             ". Error: Error Domain=NSCocoaErrorDomain Code=513 \"no " + source +
                             "\" UserInfo={NSLocalizedDescription=no " + source + "}");
    EXPECT_TRUE(system.files.has(product + "/old"));
    system.files.removeTree(product);
    EXPECT_EQ(replace(),
              failure + "copy " + source + " over " + product + " because there is no file at " + product + ".");
}

TEST_F(AuthenticatedCopyTest, TemporaryCopiesAreNamedAfterTheVersion) {
    const std::pair<const char*, std::string> rows[] = {{" _1.2 b_ ", "(1.2 b)"},
                                                        {"-(1)-", "(-(1)-)"},
                                                        {"\xE2\x80\x9C \xC3\xA9 2\xC2\xA0", "(\xC3\xA9 2)"},
                                                        {"___", "()"},
                                                        {"1.2\xC2", "(1.2)"},
                                                        {"\xE2\x80", "()"}};
    for (const auto& [version, text] : rows) {
        system.bundles.others[product] = {{"CFBundleVersion", foundation::Value(version)}};
        EXPECT_EQ(manager::_temporaryCopyNameForPath(product), "/Applications/Tolvix " + text + ".app");
    }
    system.bundles.others[product].clear();
    EXPECT_EQ(manager::_temporaryCopyNameForPath(product), "/Applications/Tolvix ((null)).app");
    EXPECT_EQ(manager::_temporaryCopyNameForPath("/Applications/None.app"), "/Applications/None (old).app");
    system.files.addFile("/Applications/None (old).app");
    EXPECT_EQ(manager::_temporaryCopyNameForPath("/Applications/None.app"), "/Applications/None (old) 2.app");
}

// Deliberate in the program: only digits and dots count in the parentheses, and a dot in the bundle's name is any
// character.
TEST_F(AuthenticatedCopyTest, LeftoversAreThoseWithAPlainVersion) {
    const auto isLeftover = [](const std::string& entry, const std::string& bundle = "Tolvix") {
        FakePlatform fresh;
        fresh.files.addFolder("/Applications/" + entry);
        return manager::_temporaryFailedCopiesForPath("/Applications/" + bundle + ".app") == Texts{entry};
    };
    for (const char* entry : {"Tolvix (1.2.3).app", "Tolvix (1.2.3) 2.app"})
        EXPECT_TRUE(isLeftover(entry)) << entry;
    for (const char* entry : {"Tolvix (1.2b).app", "Tolvix ().app", "My Tolvix (1).app"})
        EXPECT_FALSE(isLeftover(entry)) << entry;
    EXPECT_TRUE(isLeftover("Tolvix (1).app", "Tol.ix"));
    EXPECT_TRUE(isLeftover("Tol\xC3\xA9ix (1).app", "Tol.ix"));
    EXPECT_FALSE(isLeftover("Tolvi (1).app", "Tolvi."));
    EXPECT_FALSE(isLeftover("Tolvix (1.app"));
    EXPECT_FALSE(isLeftover("Tolvix (1)\n.app"));
    EXPECT_FALSE(isLeftover("T+ (1).app", "T+"));
    const std::string hostile = std::string(40, 'a') + "!";
    EXPECT_FALSE(isLeftover(hostile, "(a*)*b")) << "and at once";
    EXPECT_EQ(manager::_temporaryFailedCopiesForPath("/missing/Tolvix.app"), std::nullopt);
}
