#include "platform/Files.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "platform/Log.h"
#include "tests/platform/Support.h"
#include "tests/support/LogWatch.h"

namespace tarvo::platform::testing {

using ::testing::HasSubstr;
using ::testing::Not;

class FilesTest : public ::testing::Test {
protected:
    TemporaryFolder folder;
    LogWatch log;

    static mode_t mode(const std::string& path) {
        struct stat status {};
        return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 0777 : 0;
    }
    std::size_t entries() const {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder.path()), {}));
    }
};

TEST_F(FilesTest, WhatIsWrittenIsReadBackAndNothingElseStays) {
    auto path = folder.file("settings");
    for (auto& content : {std::string("first"), std::string(), std::string("\0\xff", 2), std::string(300'000, 'x')}) {
        ASSERT_TRUE(files::writeAtomically(path, content, true));
        EXPECT_EQ(files::read(path)->text(), content);
        EXPECT_EQ(files::size(path), content.size());
        EXPECT_EQ(mode(path), 0600u);
        EXPECT_EQ(entries(), 1u);
    }
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(FilesTest, TemporaryFilesOfDeadProcessesGo) {
    auto path = folder.file("settings"), old = path + ".0A1B2C3D.tmp", fresh = path + ".FFFFFFFF.tmp",
         another = folder.file("other.0A1B2C3D.tmp"), kept = path + ".of-the-user.tmp";
    for (auto& file : {old, fresh, another, kept}) std::ofstream(file) << "content";
    auto anHourAgo = std::filesystem::file_time_type::clock::now() - std::chrono::hours(1);
    for (auto& file : {old, another, kept}) std::filesystem::last_write_time(file, anHourAgo);
    ASSERT_TRUE(files::writeAtomically(path, "new"));
    EXPECT_FALSE(files::exists(old));
    for (auto& file : {fresh, another, kept}) EXPECT_TRUE(files::exists(file)) << file;
}

TEST_F(FilesTest, AReplacedFileKeepsItsMode) {
    auto path = folder.file("shared");
    ASSERT_TRUE(files::writeAtomically(path, "a"));
    ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
    ASSERT_TRUE(files::writeAtomically(path, "b"));
    EXPECT_EQ(mode(path), 0640u);
}

TEST_F(FilesTest, AFailedWriteLeavesTheOldStateAndIsLoggedWithoutContent) {
    ASSERT_TRUE(files::createDirectories(folder.file("taken/inside")));
    for (auto& path : {folder.file("taken"), folder.file("missing/file")}) {
        EXPECT_FALSE(files::writeAtomically(path, "confidential"));
        EXPECT_FALSE(files::read(path));
    }
    EXPECT_EQ(entries(), 1u);
    log.expectWarning("Cannot ");
    EXPECT_EQ(log.lines().size(), 4u);
    for (auto& line : log.lines()) EXPECT_THAT(line, Not(HasSubstr("confidential")));
}

TEST_F(FilesTest, ACopyIsWholeOrLeavesTheOldState) {
    auto from = folder.file("from"), to = folder.file("to");
    ASSERT_TRUE(files::writeAtomically(from, std::string(300'000, 'x')));
    ASSERT_EQ(::chmod(from.c_str(), 0400), 0);
    EXPECT_TRUE(files::copyAtomically(from, to));
    EXPECT_EQ(files::size(to), 300'000u);
    ASSERT_TRUE(files::createDirectories(folder.file("folder")));
    for (auto& other : {folder.file("missing"), folder.file("folder")}) EXPECT_FALSE(files::copyAtomically(other, to));
    EXPECT_EQ(files::size(to), 300'000u);
    EXPECT_EQ(entries(), 3u);
    log.expectWarning("Cannot write ");
}

TEST_F(FilesTest, FoldersAreTheOwnersAloneAndNeverReplaceAFile) {
    log.expectWarning("Cannot create ");
    EXPECT_TRUE(files::createDirectories(folder.file("a/b")));
    EXPECT_EQ(mode(folder.file("a")), 0700u);
    ASSERT_TRUE(files::writeAtomically(folder.file("a/file"), "x"));
    EXPECT_FALSE(files::createDirectories(folder.file("a/file")));
}

TEST(PathComponent, RefusesWhatCouldLeaveItsFolder) {
    using namespace std::string_literals;
    for (auto& good : {"a"s, "report 1.pdf"s, "..."s, ".hidden"s, "\xC3\xBC"s, std::string(200, 'x')})
        EXPECT_EQ(files::pathComponent(good), good);
    for (auto& bad : {""s, "."s, ".."s, "../x"s, "a/b"s, "/"s, "a\\b"s, "a\0b"s, "a\nb"s, "\x7F"s, "\xC2\x85"s, "\xFF"s,
                      std::string(201, 'x')})
        EXPECT_FALSE(files::pathComponent(bad)) << bad;
}

TEST(Log, ASinkThatLogsOrThrowsDoesNoHarm) {
    Journal<std::string> lines;
    auto before = setLogSink([&](std::string_view line) {
        lines.add(std::string(line));
        log(LogLevel::progress, "", "(a sink's own line)");
        throw 1;
    });
    log(LogLevel::progress, "", "one");
    log(LogLevel::progress, "", "two");
    setLogSink(before);
    EXPECT_THAT(lines.entries(), ::testing::ElementsAre("one", "two"));
}

}  // namespace tarvo::platform::testing
