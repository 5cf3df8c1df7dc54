#include "tests/bren_network/NetworkFixture.h"

namespace bren::test {
namespace {

/// A server that answers with what it saw.
class RequestTest : public NetworkTest {
protected:
    Seen sent(Task task) {
        EXPECT_EQ(kindOf(ask(std::move(task))), "none");
        return seen_;
    }
    Reply answer(const Seen& seen) {
        seen_ = seen;
        return reply_;
    }

    Seen seen_;
    Reply reply_{200, "body", {{"X-Answer", "1"}}};
    SecureServer server_{[this](const Seen& seen) { return answer(seen); }};
};

TEST_F(RequestTest, PlacesParametersByMethodAndBody) {
    using Case =
        std::tuple<std::string, std::string, std::optional<std::string>, std::string, std::string, std::string>;
    auto form = "application/x-www-form-urlencoded";
    for (auto& [method, path, body, target, sentBody, type] :
         std::vector<Case>{{"GET", "/a", {}, "/a?p=1%2F2", "", ""},
                           {"GET", "/a?b=c#f", {}, "/a?b=c&p=1%2F2", "", ""},
                           {"POST", "/a", {}, "/a", "p=1%2F2", form},
                           {"POST", "/a", "{}", "/a?p=1%2F2", "{}", "application/json"},
                           {"DELETE", "/a", {}, "/a", "p=1%2F2", form}}) {
        auto task = taskFor(server_.url(path), method);
        task.params = tarvo::ValueMap{{"p", "1/2"}};
        if (body) {
            task.request.body = Data(*body);
            task.request.headers.set("Content-Type", "application/json");
        }
        auto seen = sent(std::move(task));
        EXPECT_EQ(seen.method, method);
        EXPECT_EQ(seen.target, target) << method << path;
        EXPECT_EQ(seen.body, sentBody) << method << path;
        EXPECT_EQ(seen.headers["content-type"], type) << method << path;
    }
}

TEST_F(RequestTest, SendsHeadersAndOneAuthorization) {
    auto task = taskFor(server_.url("/"));
    task.request.headers.add("authorization", "old");
    task.request.headers.add("X-Twice", "1");
    task.request.headers.add("X-Twice", "2");
    task.authorization = "Nimbra-oauthtoken t";
    auto seen = sent(std::move(task));
    EXPECT_EQ(seen.headers["authorization"], "Nimbra-oauthtoken t");
    EXPECT_EQ(seen.headers["x-twice"].size(), 3u);
    EXPECT_NE(seen.headers["accept-encoding"].find("gzip"), std::string::npos);
    EXPECT_NE(server_.offeredProtocols().find("h2"), std::string::npos);
}

TEST_F(RequestTest, UploadsFromFileAndFromData) {
    auto folder = tarvo::files::makeTemporaryDirectory("bren-upload");
    std::string large(3'000'000, 'x');
    ASSERT_TRUE(tarvo::files::writeAtomically(folder + "/f", large));
    auto task = taskFor(server_.url("/"));
    task.params = tarvo::ValueMap{{"p", tarvo::ValueList{1}}};
    float part = 0;
    task.progressPercent = [&](float now, auto...) {
        EXPECT_GE(now, part);
        part = now;
    };
    auto answer = upload(std::move(task), {{"file", "ü \"1\".txt", BrenFileUploadInfo::FileURL{folder + "/f"}, ""},
                                           {"data", "d", Data("bytes"), "text/x"},
                                           {"none", "n", Data(), ""}});
    EXPECT_EQ(kindOf(answer), "none");
    EXPECT_EQ(seen_.method, "POST");
    EXPECT_TRUE(seen_.parts["file"].ends_with("|application/octet-stream|" + large));
    EXPECT_EQ(seen_.parts["data"], "d|text/x|bytes");
    EXPECT_EQ(seen_.parts["none"], "n|application/octet-stream|");
    EXPECT_EQ(seen_.parts["p"], "||[1]");
    EXPECT_FLOAT_EQ(part, 1);
    tarvo::files::remove(folder);
}

TEST_F(RequestTest, TellsProgressOfDownloads) {
    for (std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{2'000'000}}) {
        reply_.body.assign(size, 'y');
        std::string pieces;
        float part = 0;
        std::int64_t total = -2;
        auto task = taskFor(server_.url("/"));
        task.progressPercent = [&](float p, auto, auto t, auto, int) { part = p, total = t; };
        task.progressData = [&](Data piece, double, auto, int) { pieces += piece.view(); };
        EXPECT_EQ(ask(std::move(task)).data.size(), size);
        EXPECT_EQ(pieces, reply_.body);
        if (size) {
            EXPECT_FLOAT_EQ(part, 1);
            EXPECT_EQ(total, std::int64_t(size));
        }
    }
}

}  // namespace
}  // namespace bren::test
