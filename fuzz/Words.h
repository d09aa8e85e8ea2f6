#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// The input as a command line: a line break ends a word.
inline std::vector<std::string> words(const std::uint8_t* data, std::size_t size) {
    std::vector<std::string> found(1);
    for (std::size_t i = 0; i < size; ++i)
        if (data[i] == '\n')
            found.emplace_back();
        else
            found.back() += static_cast<char>(data[i]);
    return found;
}
