#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <regex>
#include <set>

#include "platform/Files.h"
#include "platform/Text.h"

namespace tarvo {
namespace {

namespace fs = std::filesystem;

const fs::path& root() {
    static const fs::path path = [] {
        auto named = std::getenv("TARVO_SOURCE_DIR");
        return fs::path(named ? named : fs::current_path());
    }();
    return path;
}

std::string contentOf(const std::string& path) {
    return files::read((root() / path).string()).value_or(platform::Data()).text();
}

std::vector<std::string> linesOf(const fs::path& path) {
    std::vector<std::string> lines;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
}

/// All sources below the folders, as paths from the root.
std::vector<std::string> sources(const std::vector<std::string>& folders, const std::set<std::string>& endings) {
    std::vector<std::string> found;
    for (auto& folder : folders)
        for (auto& entry : fs::recursive_directory_iterator(root() / folder))
            if (entry.is_regular_file() && endings.contains(entry.path().extension()))
                found.push_back(fs::relative(entry.path(), root()).string());
    std::sort(found.begin(), found.end());
    return found;
}

std::vector<std::string> includesOf(const std::string& path, const std::string& opening = "\"") {
    static const std::regex quoted("^\\s*#include \"([^\"]+)\""), angled("^\\s*#include <([^>]+)>");
    std::vector<std::string> includes;
    for (auto& line : linesOf(root() / path)) {
        std::smatch match;
        if (std::regex_search(line, match, opening == "\"" ? quoted : angled)) includes.push_back(match[1]);
    }
    return includes;
}

std::string topFolder(const std::string& path) { return path.substr(0, path.find('/')); }

const std::vector<std::string> libraries{"platform", "kelva_db", "bren_network", "tarvobase",
                                         "bridge",   "host",     "sandbox"};

TEST(ArchitectureTest, LibrariesIncludeDownwardOnly) {
    const std::map<std::string, std::set<std::string>> allowed{
        {"platform", {"platform"}},
        {"kelva_db", {"platform", "kelva_db"}},
        {"bren_network", {"platform", "bren_network"}},
        {"tarvobase", {"platform", "kelva_db", "bren_network", "tarvobase"}},
        {"bridge", {"platform", "tarvobase", "bridge", "bren_network", "kelva_db"}},
        {"host", {"platform", "tarvobase", "bridge", "host", "bren_network"}},
        {"sandbox", {"platform", "sandbox"}},
    };
    for (auto& source : sources(libraries, {".h", ".cpp"}))
        for (auto& include : includesOf(source))
            EXPECT_TRUE(allowed.at(topFolder(source)).contains(topFolder(include)))
                << source << " includes " << include;
}

/// Place of each header in the order of layers.txt; the longest entry that begins its path counts.
class Layers {
public:
    Layers() {
        int place = 0;
        for (auto& line : linesOf(root() / "tests/architecture/layers.txt")) {
            if (line.empty() || line.front() == '#') continue;
            ++place;
            for (auto& entry : text::split(line, " ")) places_[entry] = place;
        }
    }
    std::optional<int> placeOf(std::string path) const {
        for (;;) {
            auto found = places_.find(path);
            if (found != places_.end()) return found->second;
            auto slash = path.rfind('/');
            if (slash == std::string::npos) return std::nullopt;
            path.resize(slash);
        }
    }

private:
    std::map<std::string, int> places_;
};

TEST(ArchitectureTest, HeadersAndSourcesFollowTheOrderOfTheLayers) {
    Layers layers;
    auto folders = libraries;
    std::erase(folders, "sandbox");
    for (auto& source : sources(folders, {".h", ".cpp"})) {
        auto place = layers.placeOf(source);
        ASSERT_TRUE(place) << source << " lies in no folder of layers.txt";
        for (auto& include : includesOf(source)) {
            auto other = layers.placeOf(include);
            EXPECT_TRUE(other && *other <= *place) << source << " includes " << include;
        }
    }
}

TEST(ArchitectureTest, NoFolderIsCrowdedAndNoFileNameStandsTwice) {
    constexpr int mostFilesInAFolder = 40;
    std::map<std::string, int> files;
    std::map<std::string, std::string> places;
    for (auto& source : sources(libraries, {".h", ".cpp"})) {
        fs::path path(source);
        ++files[path.parent_path().string()];
        if (path.filename() == "main.cpp") continue;
        auto [first, isNew] = places.emplace(path.filename().string(), source);
        EXPECT_TRUE(isNew) << source << " has the name of " << first->second;
    }
    for (auto& [folder, count] : files) EXPECT_LE(count, mostFilesInAFolder) << folder;
}

/// The files and folders of `tarvobase/` that may read the configuration. All other code gets what it needs from a
/// `Scope`, from its constructor's arguments, or from `variant`, so that work stays with the account for which it
/// began.
const std::vector<std::string> readersOfTheConfiguration{
    "tarvobase/configuration/",
    "tarvobase/database_layer/KelvaDatabasePersistance.cpp",  // the queue for writes, when a database is opened
    "tarvobase/network_layer/BaseNetworkService.cpp",
    "tarvobase/network_layer/NetworkConstants.cpp",
    "tarvobase/network_layer/ServiceRequests.cpp",
    "tarvobase/network_layer/StaticBaseNetworkService.cpp",
    "tarvobase/notes/NotesAssembler.cpp",                  // the folder of sounds, and the limit of merges
    "tarvobase/change_queues/RecordChangesAssembler.cpp",  // the folders of files that go with a record
    "tarvobase/change_queues/TransactionAssembler.cpp",    // the limits of the schedulers
};

TEST(ArchitectureTest, OnlyTheEdgesReadTheConfiguration) {
    auto mayRead = [](const std::string& source) {
        return std::any_of(readersOfTheConfiguration.begin(), readersOfTheConfiguration.end(),
                           [&](const std::string& reader) { return source.starts_with(reader); });
    };
    for (auto& source : sources({"tarvobase"}, {".h", ".cpp"})) {
        if (mayRead(source)) continue;
        auto lines = linesOf(root() / source);
        for (std::size_t line = 0; line < lines.size(); ++line)
            EXPECT_EQ(lines[line].find("CommonConfigration::sharedInstance"), std::string::npos)
                << source << ":" << line + 1 << " reads the configuration";
    }
}

/// The innermost namespace that each top-level class of a header belongs to, and its name.
std::vector<std::string> classesOf(const std::string& header) {
    static const std::regex opensNamespace("^namespace ([\\w:]+) \\{");
    // A specialisation of a template has a "<" after its name and does not match.
    static const std::regex definesClass("^(?:class|struct) (\\w+)(?: final)?(?: :.*| \\{.*)$");
    std::vector<std::string> classes;
    std::string space;
    for (auto& line : linesOf(root() / header)) {
        std::smatch match;
        if (std::regex_search(line, match, opensNamespace))
            space = match[1];
        else if (std::regex_search(line, match, definesClass))
            classes.push_back(space + "::" + match[1].str());
    }
    return classes;
}

TEST(ArchitectureTest, NoClassIsDefinedInTwoHeaders) {
    std::map<std::string, std::string> definitions;
    for (auto& header : sources(libraries, {".h"}))
        for (auto& name : classesOf(header)) {
            auto [first, isNew] = definitions.emplace(name, header);
            EXPECT_TRUE(isNew || first->second == header)
                << name << " stands in " << first->second << " and " << header;
        }
}

/// The folder of a test in the folders of the code: `tests/tarvobase/storage` tests `tarvobase/storage`.
TEST(ArchitectureTest, TestsMirrorTheFoldersOfTheCode) {
    for (auto& library : {"platform", "kelva_db", "bren_network", "tarvobase", "sandbox"})
        for (auto& test : sources({"tests/" + std::string(library)}, {".h", ".cpp"})) {
            auto folder = fs::path(test).parent_path().lexically_relative("tests");
            EXPECT_TRUE(fs::is_directory(root() / folder)) << test << " tests no folder of the code";
        }
}

TEST(ArchitectureTest, HeadersFormNoCycle) {
    std::map<std::string, std::vector<std::string>> graph;
    for (auto& header : sources(libraries, {".h"})) graph[header] = includesOf(header);
    std::map<std::string, int> state;  // 1 on the way down, 2 done
    std::function<void(const std::string&, std::string)> visit = [&](const std::string& header, std::string path) {
        path += " > " + header;
        ASSERT_NE(state[header], 1) << "cycle:" << path;
        if (state[header] == 2) return;
        state[header] = 1;
        for (auto& include : graph[header])
            if (graph.contains(include)) visit(include, path);
        state[header] = 2;
    };
    for (auto& [header, includes] : std::map(graph)) visit(header, "");
}

TEST(ArchitectureTest, IncludesAreWrittenFromTheRootAndExist) {
    auto folders = libraries;
    folders.push_back("tests");
    for (auto& source : sources(folders, {".h", ".cpp"}))
        for (auto& include : includesOf(source))
            EXPECT_TRUE(fs::exists(root() / include)) << source << " includes " << include;
}

/// Folders with a name of this list hold internal headers, which are not installed.
const std::vector<std::string> internalFolders{"internal", "wire", "execution", "sql", "parsers"};

bool isInternal(const std::string& path) {
    for (auto& part : fs::path(path).parent_path())
        if (std::find(internalFolders.begin(), internalFolders.end(), part) != internalFolders.end()) return true;
    return false;
}

/// The headers that are installed.
std::vector<std::string> publicHeaders() {
    auto headers = sources({"platform", "kelva_db", "bren_network", "tarvobase", "bridge"}, {".h"});
    std::erase_if(headers, isInternal);
    return headers;
}

TEST(ArchitectureTest, PublicHeadersIncludeNoInternalOnes) {
    for (auto& header : publicHeaders())
        for (auto& include : includesOf(header)) EXPECT_FALSE(isInternal(include)) << header << " includes " << include;
}

TEST(ArchitectureTest, InternalHeadersAreNotInstalled) {
    auto rules = linesOf(root() / "cmake/Install.cmake");
    for (auto& folder : internalFolders)
        EXPECT_TRUE(std::any_of(rules.begin(), rules.end(), [&](const std::string& line) {
            return line.find("PATTERN " + folder + " EXCLUDE") != std::string::npos;
        })) << folder;
}

TEST(ArchitectureTest, HeavyHeadersStayOutOfPublicOnes) {
    static const std::regex heavy("sqlite|sqlcipher|simdjson|curl/|unicode/|openssl/|httplib|CLI/");
    for (auto& header : publicHeaders())
        for (auto& include : includesOf(header, "<"))
            EXPECT_FALSE(std::regex_search(include, heavy)) << header << " includes " << include;
}

TEST(ArchitectureTest, TheSourceTreeHasALinePerFolder) {
    auto documented = contentOf("docs/source-tree.md");
    std::set<std::string> folders;
    for (auto& source : sources(libraries, {".h", ".cpp"})) folders.insert(fs::path(source).parent_path().string());
    for (auto& folder : folders) EXPECT_NE(documented.find("`" + folder + "/`"), std::string::npos) << folder;
}

/// The lines of code that a document quotes: those of its C++ blocks, and those that its diffs add.
std::vector<std::string> quotedLines(const std::string& document) {
    std::vector<std::string> quoted;
    std::optional<std::string> language;
    for (auto& line : linesOf(root() / document)) {
        if (line.starts_with("```"))
            language = language ? std::nullopt : std::optional(line.substr(3));
        else if (language == "cpp")
            quoted.push_back(line);
        else if (language == "diff" && line.starts_with("+"))
            quoted.push_back(line.substr(1));
    }
    return quoted;
}

TEST(ArchitectureTest, QuotedCodeStandsInTheSources) {
    std::set<std::string, std::less<>> lines;
    for (auto& source : sources(libraries, {".h", ".cpp"}))
        for (auto& line : linesOf(root() / source)) lines.emplace(text::trimmed(line));
    for (auto& quoted : quotedLines("docs/adding.md"))
        EXPECT_TRUE(lines.contains(text::trimmed(quoted))) << "docs/adding.md quotes: " << quoted;
}

/// "<!-- quoted from FILE -->" before a block of code says that its lines stand in the file.
TEST(ArchitectureTest, QuotationsStandInTheFilesThatTheyName) {
    constexpr std::string_view mark = "<!-- quoted from ", fence = "```cpp\n";
    std::size_t count = 0;
    for (std::string page : {"README.md", "docs/application.md"}) {
        auto text = contentOf(page);
        for (auto at = text.find(mark); at != std::string::npos; at = text.find(mark, at + 1), ++count) {
            auto name = at + mark.size();
            auto file = text.substr(name, text.find(" -->", name) - name);
            auto begin = text.find(fence, at) + fence.size();
            auto source = contentOf(file);
            for (auto& piece : text::split(text.substr(begin, text.find("```", begin) - begin), "\n\n"))
                EXPECT_NE(source.find(piece), std::string::npos)
                    << page << " quotes what " << file << " lacks: " << piece;
        }
    }
    EXPECT_EQ(count, 6u) << "the pages quote as many blocks as before";
}

}  // namespace
}  // namespace tarvo
