#pragma once

#include "tests/contract/TestFolder.h"

#include <fstream>
#include <sstream>
#include <string>

// An application bundle with the given information and the program's own tables, in the layout that the system at hand
// reads.
class TestBundle {
public:
    // `more` is added to each table.
    explicit TestBundle(const std::string& information, std::initializer_list<const char*> languages = {"en", "de"},
                        const std::string& more = {}) {
#ifdef GNUSTEP
        const std::string resources = path() + "/Resources";
        const std::string plist = resources + "/Info-gnustep.plist";
#else
        const std::string resources = path() + "/Contents/Resources";
        const std::string plist = path() + "/Contents/Info.plist";
#endif
        for (const std::string language : languages) {
            std::filesystem::create_directories(resources + "/" + language + ".lproj");
            std::ifstream table(std::string(RESOURCES) + "/" + language + ".lproj/Localizable.strings");
            // GNUstep takes a table without a mark for one of another encoding.
            std::ofstream(resources + "/" + language + ".lproj/Localizable.strings")
                << "\xEF\xBB\xBF" << table.rdbuf() << more;
        }
        std::ofstream(plist) << "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>" << information
                             << "</dict></plist>";
    }

    std::string path() const {
        return folder_.path("Sample.app");
    }

private:
    tests::TestFolder folder_;
};
