#pragma once

#include <cstdlib>

#include "tests/end_to_end/ChangeModel.h"
#include "tests/end_to_end/EndToEnd.h"
#include "tests/end_to_end/TableContents.h"

namespace tarvo::tests {

inline ValueList listOf(const Value& value) { return value.asList() ? *value.asList() : ValueList(); }

/// A user who changes records through a program that may end at any moment, and what must hold in the end.
class ChangeWorld : public ::testing::Test {
protected:
    using Settings = std::vector<std::string>;

    /// Starts the program over its database. Returns false if it ends before the database is open.
    bool start(const Settings& environment = {});
    /// Returns the settings with which the program meets a fault of the disk at a commit.
    Settings faultAt(const std::string& fault, int commit) const;
    /// Begins with a new server, and a program that has what it needs to change records.
    void begin();
    /// Begins with a new server, started with these arguments, and a program that has downloaded all that it needs.
    void beginWhole(const std::vector<std::string>& serverArguments);
    /// Expects that the local tables are those of the server.
    void expectServer();
    /// Makes a call and returns its first line, or nullopt if the program ended before its end.
    std::optional<Value> ask(const std::string& call, const ValueMap& request = {}) {
        send(call, request);
        return answer();
    }
    void send(const std::string& call, const ValueMap& request);
    std::optional<Value> answer();
    /// Makes a change. Returns the line that says whether it is saved, or nullopt if the program ended before.
    std::optional<Value> make(const ModelChange& change) {
        send(change);
        return answer(change);
    }
    void send(const ModelChange& change);
    std::optional<Value> answer(const ModelChange& change);
    /// Returns the next line of the last call; nullopt after its last line, and if the program ended.
    std::optional<Value> nextLine();
    Value response(const std::string& call, const ValueMap& request = {});
    void control(const std::string& call, const std::string& body);

    /// Takes a change into the model if it is saved: if the program said so or, when it ended before it answered
    /// (`line` is nullopt), if the program that is started then finds it in its tables. Returns the reason otherwise.
    std::string take(ModelChange change, const std::optional<Value>& line);
    /// Lets everything go, and expects that nothing is left. The program must be free of faults.
    void drain();
    void waitForRounds();
    /// Expects that the server and the local tables hold exactly what the model says.
    void check();
    ValueList localRecords(const std::string& module, const std::string& column, const ValueList& values);
    std::optional<Value> askForRecords(const std::string& module, const std::string& column, const ValueList& values);
    ValueList recordsAtServer(const std::string& module) const;

    std::optional<EndToEnd> world;
    std::mt19937_64 random;
    ChangeModel model{random};
    std::unique_ptr<Process> host;
    int starts = 0;
    bool isHeld = false;  ///< whether nothing is sent for now

private:
    bool storeRow(const ModelChange& change);
    void removeRow(const ModelRecord& record);
    bool isStoredTransaction(const ModelRecord& record, const ValueList& found);
    void expectSounds() const;
    bool isStored(const ModelChange& change);
    void expectNoTemporaryId(const ChangeModel::Records& atServer) const;

    int lines_ = 0;
    bool isAnswered_ = true;
};

}  // namespace tarvo::tests
