// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// Runs a fuzz target over committed inputs, with whatever compiler: every file of the directories that are
// named.

#include "fuzz/Check.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size);

namespace
{

std::vector<char> contentOf(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    spotwell::check(file.is_open(), "an input can be read");
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

} // namespace

int main(int count, char** arguments)
{
    std::vector<std::filesystem::path> inputs;
    for (int i = 1; i < count; ++i)
        std::copy(std::filesystem::directory_iterator(arguments[i]), {}, std::back_inserter(inputs));
    std::sort(inputs.begin(), inputs.end());
    spotwell::check(!inputs.empty(), "there are inputs");
    for (const auto& input : inputs) {
        std::printf("%s\n", input.c_str());
        std::fflush(stdout);
        const std::vector<char> content = contentOf(input);
        LLVMFuzzerTestOneInput(reinterpret_cast<const unsigned char*>(content.data()), content.size());
    }
    return 0;
}
