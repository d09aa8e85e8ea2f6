#pragma once

#include <cstdint>
#include <string>
#include <vector>

// The authorization service's stand-in. It asks nobody and starts tools with this user's rights; what the person sees,
// and what a tool may do as administrator, cannot be seen here.
struct SecurityStandIn {
    // The answers to the next calls.
    std::int32_t createStatus = 0;
    std::int32_t executeStatus = 0;
    // What came of the calls.
    int references = 0;
    std::vector<std::vector<std::string>> commands;

    static SecurityStandIn& shared() {
        static SecurityStandIn standIn;
        return standIn;
    }
};
