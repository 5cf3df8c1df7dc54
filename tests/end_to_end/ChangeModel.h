#pragma once

#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "platform/Value.h"

namespace tarvo::tests {

/// A name of a field: its column here, and its API name at the server.
struct ModelField {
    const char* column = nullptr;
    const char* name = nullptr;
};

/// A module whose records are changed.
struct ModelModule {
    const char* name;
    ModelField title;
    ModelField step;
    ModelField remark;  ///< a text that may be cleared; notes have none
    ModelField lookup;
    const char* lookupModule;  ///< null for a lookup of any module but notes
    bool isOfNotes() const { return !lookupModule; }
};

inline constexpr ModelField description{"DESCRIPTION", "Description"};
inline constexpr ModelModule modelModules[] = {
    {"Accounts",
     {"ACCOUNTNAME", "Account_Name"},
     description,
     {"WEBSITE", "Website"},
     {"PARENTACCOUNT", "Parent_Account"},
     "Accounts"},
    {"Contacts",
     {"LASTNAME", "Last_Name"},
     description,
     {"DEPARTMENT", "Department"},
     {"ACCOUNTID", "Account_Name"},
     "Accounts"},
    {"Leads", {"LASTNAME", "Last_Name"}, description, {"CITY", "City"}, {"REFERREDBY", "Referred_By"}, "Contacts"},
    {"Notes", {"TITLE", "Note_Title"}, {"NOTECONTENT", "Note_Content"}, {}, {"SEID", "Parent_Id"}, nullptr},
};
inline constexpr const ModelModule& notesOfModel = modelModules[3];

/// What an add or edit of a record sets.
struct ModelStep {
    std::string text;  ///< its own
    std::optional<std::string> remark;
    std::optional<std::optional<std::size_t>> lookup;
};

/// A record as the user has left it.
struct ModelRecord {
    const ModelModule* module = nullptr;
    std::string name;         ///< unique, and never changed
    std::string temporaryId;  ///< a screen keeps it
    std::string realId = {};  ///< empty until the server was asked for it
    std::string step = {};    ///< the last change's own text
    std::string remark = {};
    bool hasSound = false;                   ///< a voice note, whose sound is its name
    std::optional<std::size_t> lookup = {};  ///< the number of a record
    int depth = 0;                           ///< of the lookups
    bool isReferenced = false;               ///< such a record is not deleted: nothing could name it any more
    bool isDeleted = false;
    /// Whether one of its changes may have been refused. Changes that have failed are merged or shortened.
    bool mayHaveFailed = false;
    std::vector<ModelStep> steps = {};  ///< of its add and edits, in order
};

/// A change that the user makes. It becomes part of the model when it is saved.
struct ModelChange {
    enum class Kind { add, edit, delete_ };
    Kind kind = Kind::add;
    ModelRecord after;
    std::size_t record = 0;  ///< of an edit or delete
    const char* call = "";
    ValueMap request = {};
    ValueMap row = {};  ///< of an add that is queued as a transaction: what the caller stores itself
    /// Returns the values that the change brings, by column.
    ValueMap values() const {
        auto record = request.valueOf("record");
        auto values = record.asMap() ? record.asMap()->valueOf("values") : Value();
        return values.asMap() ? *values.asMap() : row;
    }
    bool isOfNote() const { return after.module->isOfNotes() && kind != Kind::delete_; }
};

/// What a user has made of some records, and what must hold once the server has all of it.
class ChangeModel {
public:
    explicit ChangeModel(std::mt19937_64& random) : random_(random) {}

    /// Forgets all records, for a server that begins anew.
    void clear();
    /// Begins a round; what it adds goes by this name.
    void beginRound(const std::string& name, bool mayBeRefused);
    /// Returns any change.
    ModelChange nextChange();
    /// Adds an account, a contact or a lead.
    ModelChange addRecord();
    ModelChange addNote(bool hasSound);
    /// Adds a record by a transaction of this kind in the current queue.
    ModelChange addByTransaction(const char* kind);
    ModelChange edit(std::size_t record);
    ModelChange delete_(std::size_t record);
    void apply(ModelChange change);
    /// Notes that a change has failed, such as one that names a record whose add was given up.
    void noteFailed(const std::string& recordId);
    /// Takes back an add or edit that never reached the server.
    void cancel(const ModelChange& change);
    const std::vector<ModelRecord>& records() const { return records_; }

    /// Fails the test unless the server holds exactly the changes made, once each and in order by record, and the local
    /// tables have the same. The lists are the server's changes and, by module, its and the local records.
    using Records = std::map<std::string, ValueList>;
    void expectHeld(const ValueList& changes, const Records& atServer, const Records& here);

private:
    void noteFailedForOthers();
    int number(int from, int to) { return std::uniform_int_distribution<int>(from, to)(random_); }
    bool isOneIn(int count) { return number(1, count) == 1; }
    ModelChange add();
    ModelChange newRecord(const ModelModule& module);
    ValueMap valuesOf(const ModelRecord& record, const char* ModelField::*name);
    const ModelModule& anyModule() { return modelModules[isOneIn(2) ? 0 : number(1, 2)]; }
    std::optional<std::size_t> anyRecord(bool mayBeReferenced);
    void setLookup(ModelRecord& record);
    std::string idOf(const ModelRecord& record);
    void expectValues(const ModelRecord& record, const Value& server, const Value& here) const;
    void expectChanges(const ModelRecord& record, const ValueList& changes) const;

    std::mt19937_64& random_;
    std::vector<ModelRecord> records_;
    std::string round_;
    bool mayBeRefused_ = false;
    std::size_t firstOfRound_ = 0;
    int steps_ = 0, names_ = 0;
};

}  // namespace tarvo::tests
