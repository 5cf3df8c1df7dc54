#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/Files.h"
#include "platform/Text.h"

namespace tarvo::tests {

namespace {

std::string contentOf(const std::string& path) {
    const char* root = std::getenv("TARVO_SOURCE_DIR");
    auto data = files::read(std::string(root ? root : ".") + "/" + path);
    return data ? std::string(data->text()) : "";
}

}  // namespace

/// "<!-- quoted from FILE -->" before a block of code says that its lines stand in the file.
TEST(Quotations, StandInTheFilesThatTheyName) {
    constexpr std::string_view mark = "<!-- quoted from ", fence = "```cpp\n";
    std::size_t count = 0;
    for (std::string page : {"README.md", "docs/application.md"}) {
        auto text = contentOf(page);
        for (auto at = text.find(mark); at != std::string::npos; at = text.find(mark, at + 1)) {
            auto name = at + mark.size();
            auto file = text.substr(name, text.find(" -->", name) - name);
            auto begin = text.find(fence, at) + fence.size();
            auto code = text.substr(begin, text.find("```", begin) - begin);
            auto source = contentOf(file);
            for (auto& piece : text::split(code, "\n\n"))
                EXPECT_NE(source.find(piece), std::string::npos) << page << " quotes what " << file << " lacks:\n"
                                                                 << piece;
            ++count;
        }
    }
    EXPECT_EQ(count, 6u) << "the pages quote as many blocks as before";
}

}  // namespace tarvo::tests
