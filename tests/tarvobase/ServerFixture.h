#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tarvobase/download/Downloadable.h"
#include "tarvobase/value_objects/module/Module.h"
#include "tests/tarvobase/Fixture.h"
#include "tests/tarvobase/NoticeListener.h"

namespace tarvo {

/// Records the ends of steps and the failures that they report.
class StepListener final : public DownloadProgressible, public NoticeListener<CommonErrorRelay> {
public:
    void didComplete(Downloadable& step, bool status) override {
        ended += (ended.empty() ? "" : ", ") + std::string(rawText(step.processName())) + (status ? " true" : " false");
    }
    void progressDidUpdate(Downloadable&, int, int) override {}
    std::string ended, notices;

private:
    void noticed(const std::string& notice) override { notices += notice + ";"; }
};

/// Modules with these names, each with an API name of its own.
inline std::vector<Module> modulesNamed(const std::vector<std::string>& names, ModuleType type = ModuleType::default_) {
    std::vector<Module> modules;
    for (auto& name : names) modules.push_back({.moduleName = name, .apiName = name + "_API", .type = type});
    return modules;
}
/// Returns the names of the modules, with spaces between them.
inline std::string namesOf(const std::vector<Module>& modules) {
    std::string names;
    for (auto& module : modules) names += (names.empty() ? "" : " ") + module.moduleName;
    return names;
}

/// A test with the account's database and with services whose answers it scripts.
class ServerTest : public FoundationTest {
protected:
    void SetUp() override {
        FoundationTest::SetUp();
        database = openDatabase();
    }
    void createTables(const std::vector<std::string>& statements) {
        for (auto& statement : statements) database->createTable(statement);
    }
    void runStatement(const std::string& sql) { EXPECT_TRUE(database->execute(sql, std::nullopt)) << sql; }
    /// Returns the first column of a query's rows.
    std::vector<std::string> column(const std::string& query) {
        std::vector<std::string> values;
        if (auto rows = database->fetchObjects(query, std::nullopt))
            for (auto row : *rows) values.push_back(row.cell(0).copy().toText().value_or("NULL"));
        return values;
    }
    template <class Service>
    std::shared_ptr<Service> overNetwork() {
        auto service = std::make_shared<Service>();
        service->setNetworkAdapter(network);
        return service;
    }

    std::shared_ptr<KelvaDatabasePersistance> database;
    std::shared_ptr<ScriptedNetworkAdapter> network = std::make_shared<ScriptedNetworkAdapter>();
};

}  // namespace tarvo
