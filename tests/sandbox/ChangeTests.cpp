#include <algorithm>
#include <set>

#include "platform/Text.h"
#include "sandbox/changes/RecordDraft.h"
#include "sandbox/data/DataSet.h"
#include "sandbox/data/ViewFilter.h"
#include "tests/sandbox/RunningSandbox.h"
#include "tests/support/OnThreads.h"

namespace tarvo::sandbox::tests {
namespace {

class ChangeTests : public RunningSandbox {
protected:
    static Client::Headers headers(const std::string& key) {
        Client::Headers headers{{"Authorization", token}};
        if (!key.empty()) headers.emplace("x-transaction-id", key);
        return headers;
    }
    Value send(const std::string& call, const std::string& payloads, const std::string& key = "",
               const std::string& module = "Leads", Client* sender = nullptr) {
        auto body = call == "deleterecord" ? "" : R"({"data":[)" + payloads + "]}";
        auto id = call == "deleterecord" ? "&id=" + payloads : "";
        return json((sender ? *sender : *client)
                        .postJson("/crm/v4/products/" + call + "?module=" + module + id, body, headers(key)));
    }
    Value upload(const std::string& parameters, const std::string& key = "") {
        return json(client->upload("/crm/v4/uploadattachment?" + parameters, "offer.pdf", "12345", headers(key)));
    }
    static std::string idIn(const Value& answer, std::size_t index = 0) {
        return at(at(entryOf(answer, index), "info"), "recordId").textOr("");
    }
    /// Returns the code and the field of a refusal, or "" for an accepted change.
    static std::string refusalIn(const Value& answer, std::size_t index = 0) {
        auto entry = entryOf(answer, index);
        const auto error = at(entry, "error");
        if (!error.asList()) return "";
        auto field = at(at(at(entry, "info"), "details"), "api_name").textOr("");
        return error.asList()->at(0).textOr("?") + " " + field;
    }
    ValueList control(const std::string& path, std::string_view name) {
        auto list = at(json(client->get("/control/" + path)), name);
        return list.asList() ? *list.asList() : ValueList();
    }
    /// Returns a record as a map; null when there is none.
    Value record(const std::string& id, const std::string& module = "Leads") {
        for (const auto& each : control("records?module=" + module, "records"))
            if (at(each, "id") == Value(id)) return each;
        return {};
    }
    void setRules(const std::string& rules) {
        ASSERT_EQ(client->postJson("/control/rules", rules)->status, 200) << rules;
    }
    /// Returns the ids that a call of records lists.
    std::vector<std::string> idsOf(const std::string& call, Client::Form form) {
        form.emplace("mcount", "10000");
        std::vector<std::string> ids;
        auto rows = at(entryOf(json(client->post("/crm/v4/products/" + call, form, token))), "data");
        if (!rows.asList()) return ids;
        for (const auto& row : *rows.asList())
            for (const auto& entry : *row.asList())
                if (entry.asList()->at(0) == Value("id")) ids.push_back(entry.asList()->at(1).textOr(""));
        return ids;
    }

    const Accounts accounts{std::vector<Account>{{"42", token}, {"43", "other-secret"}}};
    DataSet data{1, accounts, 250};
    std::string idOf(const std::string& module, std::size_t position) {
        return data.records->now().list(module).at(position)->id();
    }
};

TEST_F(ChangeTests, EveryReadShowsAnAddAnEditAndADelete) {
    ASSERT_EQ(client->postJson("/control/clock", R"({"offsetMilliseconds":-1000000})")->status, 200);
    auto now = at(json(client->get("/control/state")), "servertime").asInteger().value_or(0);
    auto added =
        idIn(send("addrecord", R"({"Last_Name":"Ångström","Company":"X","Annual_Revenue":12.5,"Phone":null})"));
    auto edited = idOf("Leads", 5), deleted = idOf("Leads", 6);
    EXPECT_EQ(idIn(send("updaterecord", R"({"id":")" + edited + R"(","Last_Name":"Zorn","Email":null})")), edited);
    EXPECT_EQ(idIn(send("deleterecord", deleted)), deleted);

    std::string view;
    for (const auto& each : data.views)
        if (each.module == "Leads" && each.isDefault) view = each.id;
    for (const auto& ids : {idsOf("getrecords", {{"module", "Leads"}}),
                            idsOf("getcvrecords", {{"module", "Leads"}, {"cvid", view}, {"sort_by", "id"}}),
                            idsOf("getcvrecords", {{"module", "Leads"}, {"cvid", view}, {"sort_by", "Last_Name"}})}) {
        EXPECT_EQ(ids.size(), 250u);
        EXPECT_EQ(std::count(ids.begin(), ids.end(), added), 1);
        EXPECT_EQ(std::count(ids.begin(), ids.end(), edited), 1);
        EXPECT_EQ(std::count(ids.begin(), ids.end(), deleted), 0);
    }
    EXPECT_EQ(idsOf("getrecords", {{"module", "Leads"}}).front(), added);
    EXPECT_EQ(idsOf("getrecord", {{"module", "Leads"}, {"id", deleted}}).size(), 0u);

    auto lead = record(added);
    EXPECT_EQ(at(lead, "Full_Name"), Value("Ångström"));
    EXPECT_EQ(at(lead, "Annual_Revenue"), Value("12.5"));
    EXPECT_EQ(at(lead, "Owner"), Value(data.users[0].id));
    EXPECT_EQ(at(lead, "Modified_By"), Value(data.users[0].id));
    EXPECT_EQ(at(lead, "Created_Time"), at(lead, "Modified_Time"));
    EXPECT_EQ(at(record(edited), "Email"), Value(""));
    EXPECT_NE(at(record(edited), "Created_Time"), at(record(edited), "Modified_Time"));

    auto changes = control("changes", "changes");
    ASSERT_EQ(changes.size(), 3u);
    for (auto [index, kind] : {std::pair(0u, "add"), {1u, "edit"}, {2u, "delete"}}) {
        EXPECT_EQ(at(changes[index], "kind"), Value(kind));
        EXPECT_LT(at(changes[index], "time").asInteger().value_or(0) - now, 60'000) << "the server's clock";
    }
}

TEST_F(ChangeTests, OrdersAndViewsAreThoseOfTheSnapshotUntilValuesChange) {
    auto snapshot = data.records->now();
    RecordDraft draft(*data.records);
    for (auto module : {"Leads", "Activities"}) {
        auto list = snapshot.list(module);
        for (std::size_t i = 0; i < list.size(); i += 3) {
            auto record = *list.at(i);
            draft.edit(record, {record.values(), record.createdTime(), record.modifiedTime()});
        }
    }
    draft.publish();
    auto changed = data.records->now();
    for (std::string module : {"Leads", "Activities"})
        for (const auto& field : data.metadata.find(module)->second.fields)
            for (bool isAscending : {true, false}) {
                RecordSort sort{&field, isAscending};
                auto before = data.recordOrders.order(snapshot.list(module), module, "", nullptr, sort);
                auto after = data.recordOrders.order(changed.list(module), module, "", nullptr, sort);
                EXPECT_EQ(*before, *after) << module << " " << field.apiName << isAscending;
            }
    for (const auto& view : data.views) {
        ViewFilter filter(data, view, "42", 0);
        auto order = [&](const auto& records) {
            auto holds = [&](const RecordData& record) { return filter.holds(record); };
            return data.recordOrders.order(records.list(view.module), view.module, view.id, holds, {});
        };
        EXPECT_EQ(*order(snapshot), *order(changed)) << view.module << " " << view.displayName;
    }
}

TEST_F(ChangeTests, RefusalsNameCodeAndField) {
    setRules(R"({"module":"Leads","mandatory":["Last_Name"],"unique":["Email"],"refuse":["delete"]})");
    setRules(R"({"module":"Deals","refuse":["add","edit"]})");
    auto email = data.records->now().list("Leads").at(7)->value("Email").text;
    auto lead = idOf("Leads", 1), account = idOf("Accounts", 1), gone = idOf("Contacts", 3);
    ASSERT_EQ(refusalIn(send("deleterecord", gone, "", "Contacts")), "");
    struct {
        std::string call, module, payload, refusal;
    } rows[] = {
        {"addrecord", "Leads", R"({"Company":"X"})", "crmMANDATORY_NOT_FOUND Last_Name"},
        {"updaterecord", "Leads", R"({"id":")" + lead + R"(","Last_Name":null})", "crmMANDATORY_NOT_FOUND Last_Name"},
        {"addrecord", "Leads", R"({"Last_Name":"x","Email":")" + email + R"("})", "crmINVALID_DATA Email"},
        {"addrecord", "Deals", R"({"Deal_Name":"x"})", "crmNO_PERMISSION "},
        {"updaterecord", "Deals", R"({"id":")" + idOf("Deals", 0) + R"("})", "crmNO_PERMISSION "},
        {"deleterecord", "Leads", lead, "crmNO_PERMISSION "},
        {"deleterecord", "Contacts", lead, "INVALID_DATA id"},
        {"deleterecord", "Contacts", gone, "INVALID_DATA id"},
        {"deleterecord", "Contacts", "NEW_000000001", "INVALID_DATA id"},
        {"updaterecord", "Contacts", R"({"id":")" + gone + R"(","Phone":"1"})", "INVALID_DATA id"},
        {"updaterecord", "Contacts", R"({"Phone":"1"})", "INVALID_DATA "},
        {"addrecord", "Contacts", R"({"id":"TarvoTEMPID#1"})", "INVALID_DATA id"},
        {"addrecord", "Contacts", R"({"Account_Name":"NEW_000000001"})", "INVALID_DATA Account_Name"},
        {"addrecord", "Contacts", R"({"Account_Name":")" + lead + R"("})", "INVALID_DATA Account_Name"},
        {"addrecord", "Contacts", R"({"Reporting_To_Contact":")" + gone + R"("})", "INVALID_DATA Reporting_To_Contact"},
        {"addrecord", "Contacts", R"({"Account_Name":")" + account + R"("})", ""},
        {"addrecord", "Contacts", R"({"Created_By":"TarvoTEMPID#1"})", "INVALID_DATA Created_By"},
        {"addrecord", "Contacts", R"({"Last_Name":"NEW_000000001","Created_By":"ignored"})", ""},
        {"addrecord", "Contacts", R"({"Owner":"1"})", "INVALID_DATA Owner"},
        {"addrecord", "Tasks", R"({"What_Id":"TarvoTEMPID#2"})", "INVALID_DATA What_Id"},
        {"addrecord", "Tasks", R"({"Reminder":"tomorrow"})", "INVALID_DATA Reminder"},
        {"addrecord", "Tasks", R"({"Reminder":{"ALARM":"FREQ=NONE"},"Recurring_Activity":{"RRULE":null}})", ""},
        {"addrecord", "Events", R"({"Participants":3})", "INVALID_DATA Participants"},
        {"addrecord", "Events", R"({"Participants":[{"id":"NEW_000000001"}]})", "INVALID_DATA Participants"},
        {"addrecord", "Events", R"({"Participants":[{"record_id":"TarvoTEMPID#1"}]})", "INVALID_DATA Participants"},
        {"addrecord", "Events", R"({"Participants":[{"participant":"NEW_000000001"}]})", "INVALID_DATA Participants"},
        {"addrecord", "Cases", R"({"CASENUMBER":"1"})", "INVALID_DATA CASENUMBER"},
        {"addrecord", "Cases", R"({"Subject":1})", "INVALID_DATA Subject"},
        {"addrecord", "Campaigns", R"({"Start_Date":"soon"})", "INVALID_DATA Start_Date"},
        {"addrecord", "Campaigns", R"({"Budgeted_Cost":"much","Start_Date":"2024-02-29"})",
         "INVALID_DATA Budgeted_Cost"},
        {"addrecord", "Products", R"({"Active":1})", "INVALID_DATA Active"},
        {"addrecord", "Products", "7", "INVALID_DATA "},
        {"addrecord", "Products", "", "INVALID_DATA "},
        {"addrecord", "Products", "{", "INVALID_DATA "},
        {"addrecord", "Activities", R"({"Subject":"x"})", "INVALID_MODULE "},
        {"addrecord", "EventInvitees", "{}", "INVALID_MODULE "},
        {"deleterecord", "Nowhere", lead, "INVALID_MODULE "},
    };
    auto before = control("changes", "changes").size();
    std::size_t accepted = 0;
    for (const auto& row : rows) {
        EXPECT_EQ(refusalIn(send(row.call, row.payload, "", row.module)), row.refusal) << row.module << row.payload;
        accepted += row.refusal.empty() ? 1 : 0;
    }
    EXPECT_EQ(control("changes", "changes").size(), before + accepted);
}

TEST_F(ChangeTests, AnswersComeInTheChosenForm) {
    const std::tuple<std::string, bool, bool, std::size_t, bool> rows[] = {{"record", true, false, 1, true},
                                                                           {"id", false, false, 1, false},
                                                                           {"recordId", true, false, 0, false},
                                                                           {"texts", false, false, 3, false},
                                                                           {"topLevel", false, true, 0, false}};
    for (const auto& [form, hasRecordId, isTopLevel, count, holdsWholeRecord] : rows) {
        setRules(R"({"module":"Contacts","answer":")" + form + "\"}");
        auto answer = send("addrecord", R"({"Last_Name":"x"},{"Phone":7})", "", "Contacts");
        EXPECT_EQ(refusalIn(answer, 1), "INVALID_DATA Phone") << "a refusal leaves its siblings alone";
        answer = send("addrecord", R"({"Last_Name":"x"})", "", "Contacts");
        EXPECT_EQ(at(answer, "data").asList() != nullptr, isTopLevel) << form;
        if (isTopLevel) continue;
        EXPECT_EQ(!idIn(answer).empty(), hasRecordId) << form;
        auto data = at(entryOf(answer), "data");
        ASSERT_EQ(data.asList()->size(), count) << form;
        EXPECT_EQ(count == 1 && data.asList()->at(0).asList()->size() > 1, holdsWholeRecord) << form;
    }
    EXPECT_EQ(at(entryOf(send("addrecord", R"({"Note_Content":"x"})", "", "Notes")), "data").asList()->size(), 3u);
    setRules(R"({"module":"Contacts","refuse":["add"],"errorObjects":true})");
    auto error = at(entryOf(send("addrecord", R"({"Last_Name":"x"})", "", "Contacts")), "error");
    EXPECT_EQ(at(error.asList()->at(0), "code"), Value("crmNO_PERMISSION"));
}

TEST_F(ChangeTests, AKeyIsAppliedOnceWhateverBecomesOfItsAnswer) {
    const char *applied = R"("delayAfter" "dropAfter" "truncate" "nonJson" "missingIds" "foreignIds" "olderEnvelope")",
               *notApplied = R"("delay" "dropBefore" "errorEnvelope","status":401 "errorEnvelope","status":429 )"
                             R"("errorEnvelope","status":503)";
    for (bool isApplied : {true, false})
        for (const auto& key : text::split(isApplied ? applied : notApplied, " ")) {
            auto count = control("changes", "changes").size();
            setFault(std::string(R"({"call":"products/addrecord","times":1,"fault":)") + key + "}");
            auto faulty = send("addrecord", R"({"Last_Name":"once"})", key);
            bool isDelay = key.starts_with("\"delay");
            EXPECT_EQ(control("changes", "changes").size(), count + (isApplied || isDelay ? 1 : 0)) << key;
            auto first = send("addrecord", R"({"Last_Name":"once"})", key);
            EXPECT_EQ(first, send("addrecord", R"({"Last_Name":"once"})", key)) << key;
            auto changes = control("changes", "changes");
            ASSERT_EQ(changes.size(), count + 1) << key;
            EXPECT_EQ(at(changes.back(), "id"), Value(idIn(first))) << key;
            EXPECT_EQ(at(changes.back(), "key"), Value(key));
            EXPECT_EQ(idIn(faulty) == idIn(first), isDelay) << key;
        }
}

TEST_F(ChangeTests, KeysOfRefusedChangesAreKeptOnDemand) {
    for (std::string key : {"false", "true"}) {
        setRules(R"({"module":"Leads","mandatory":["Company"],"keepKeys":)" + key + "}");
        EXPECT_NE(refusalIn(send("addrecord", R"({"Last_Name":"x"})", key)), "");
        setRules(R"({"module":"Leads"})");
        EXPECT_EQ(refusalIn(send("addrecord", R"({"Last_Name":"x"})", key)).empty(), key == "false");
    }
}

TEST_F(ChangeTests, RowsKeepTheirIdsAndNewOnesGetTheirOwn) {
    auto product = idOf("Products", 2);
    auto row = R"({"product":")" + product + R"(","quantity":)";
    auto quote =
        idIn(send("addrecord", R"({"Subject":"q","Product_Details":[)" + row + "1}," + row + "2}]}", "", "Quotes"));
    auto rows = *at(record(quote, "Quotes"), "Product_Details").asList();
    ASSERT_EQ(rows.size(), 2u);
    auto first = at(rows[0], "id").textOr(""), second = at(rows[1], "id").textOr("");
    EXPECT_NE(first, second);

    auto edit = [&](const std::string& list) {
        return send("updaterecord", R"({"id":")" + quote + R"(","Product_Details":[)" + list + "]}", "", "Quotes");
    };
    EXPECT_EQ(refusalIn(edit(R"({"id":")" + second + R"(","quantity":5},)" + row + "3}")), "");
    rows = *at(record(quote, "Quotes"), "Product_Details").asList();
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(at(rows[0], "id"), Value(second));
    EXPECT_EQ(at(rows[0], "quantity"), Value("5"));
    EXPECT_EQ(at(rows[0], "product"), Value(product));
    EXPECT_TRUE((std::set<std::string>{"", first, second}.count(at(rows[1], "id").textOr("")) == 0));
    EXPECT_EQ(refusalIn(edit(R"({"id":")" + first + R"("})")), "INVALID_DATA Product_Details") << "the row is gone";
}

TEST_F(ChangeTests, AnUploadAddsAnAttachment) {
    auto parent = idOf("Leads", 4);
    auto answer = upload("relatedmodule=Leads&moduleAPI=Attachments&id=" + parent, "key");
    EXPECT_EQ(answer, upload("relatedmodule=Leads&moduleAPI=Attachments&id=" + parent, "key"));
    auto attachment = record(idIn(answer), "Attachments");
    EXPECT_EQ(at(attachment, "Parent_Id"), Value(parent));
    EXPECT_EQ(at(attachment, "$se_module"), Value("Leads"));
    EXPECT_EQ(at(attachment, "File_Name"), Value("offer.pdf"));
    EXPECT_EQ(at(attachment, "Attachment_Size"), Value("5"));
    for (const auto* wrong : {"relatedmodule=Leads&id=1", "relatedmodule=Leads&id=TarvoTEMPID%231", "id=1",
                              "relatedmodule=Leads&recordID=NEW_000000001&id="})
        EXPECT_NE(refusalIn(upload(wrong + (std::string_view(wrong).ends_with("id=") ? parent : ""))), "") << wrong;
    EXPECT_EQ(control("changes", "changes").size(), 1u);

    auto note = idOf("Notes", 4);
    auto listed = [&] { return at(record(note, "Notes"), "$attachments").asList()->size(); };
    auto ofNote = idIn(upload("relatedmodule=Notes&id=" + note));
    EXPECT_EQ(listed(), 1u) << "notes list their attachments";
    send("deleterecord", ofNote, "", "Attachments");
    EXPECT_EQ(listed(), 0u);
}

TEST_F(ChangeTests, ASpokenNoteKeepsItsSound) {
    const std::string sound("RIFF\0\r\n--x\xff", 12), lead = idOf("Leads", 4);
    const auto payload = R"({"Note_Title":"On the road","Note_Content":"it's","Parent_Id":")" + lead + "\"}";
    auto speak = [&](const std::string& module, const std::string& data, const std::string& key = "") {
        return json(client->upload("/crm/v4/uploadvoicenote", "On the road.wav", sound, headers(key),
                                   {{"module", module}, {"dataJSON", data}}));
    };
    auto answer = speak("Notes", R"({"data":[)" + payload + "]}", "key");
    EXPECT_EQ(answer, speak("Notes", R"({"data":[)" + payload + "]}", "key"));
    auto texts = at(entryOf(answer), "data");
    ASSERT_EQ(texts.asList()->size(), 3u);
    auto id = texts.asList()->front().textOr("");
    auto note = record(id, "Notes");
    for (auto [field, value] : {std::pair("voice_note", "true"), {"Attachment_Size", "12"}, {"se_module", "Leads"}})
        EXPECT_EQ(at(note, field), Value(value)) << field;
    EXPECT_EQ(texts.asList()->at(2), at(note, "Modified_Time"));
    EXPECT_EQ(client->get("/control/files/" + id)->body, sound);
    EXPECT_EQ(client->get("/control/files/1")->status, 404);
    EXPECT_EQ(at(control("files", "files").at(0), "name"), Value("On the road.wav"));

    struct {
        const char *module, *json;
    } wrong[] = {{"Leads", R"({"data":[{"Last_Name":"x"}]})"},
                 {"Notes", R"({"data":[]})"},
                 {"Notes", R"({"data":[{"Note_Content":"a"},{"Note_Content":"b"}]})"},
                 {"Notes", R"({"data":[{"Note_Content":"a","Parent_Id":"NEW_000000001"}]})"},
                 {"Notes", "sound"}};
    for (auto& one : wrong) EXPECT_NE(refusalIn(speak(one.module, one.json)), "") << one.json;
    EXPECT_EQ(control("changes", "changes").size(), 1u);
    EXPECT_EQ(control("files", "files").size(), 1u);
}

TEST_F(ChangeTests, AnEditMayRepeatWhatHasBeenDeleted) {
    auto account = idOf("Accounts", 3), contact = idOf("Contacts", 3),
         both = R"({"id":")" + contact + R"(","Account_Name":")" + account + "\"}";
    EXPECT_EQ(refusalIn(send("updaterecord", both, "", "Contacts")), "");
    EXPECT_EQ(refusalIn(send("deleterecord", account, "", "Accounts")), "");
    EXPECT_EQ(refusalIn(send("updaterecord", both, "", "Contacts")), "");
    EXPECT_EQ(at(record(contact, "Contacts"), "Account_Name"), Value(account));
}

TEST_F(ChangeTests, ChangesOfManyThreadsAreAllThereOnce) {
    constexpr int threads = 8, each = 7;
    auto shared = idOf("Accounts", 0);
    onThreads(threads, [&](int thread) {
        Client own("localhost", port, certificates.authority);
        for (int i = 0; i < each; ++i) {
            auto name = std::to_string(thread) + "-" + std::to_string(i);
            auto payload = R"({"Last_Name":")" + name + "\"}";
            auto added = send("addrecord", payload, name, "Leads", &own);
            EXPECT_EQ(added, send("addrecord", payload, name, "Leads", &own));
            auto edit = R"({"id":")" + shared + R"(","Employees":)" + std::to_string(i) + "}";
            EXPECT_EQ(refusalIn(send("updaterecord", edit, "", "Accounts", &own)), "");
            auto page = own.post("/crm/v4/products/getrecords", {{"module", "Leads"}, {"mcount", "60"}}, token);
            EXPECT_EQ(at(entryOf(json(page)), "data").asList()->size(), 60u);
        }
    });
    std::set<std::string> names;
    for (const auto& lead : control("records?module=Leads&changed=true", "records"))
        names.insert(at(lead, "Last_Name").textOr(""));
    EXPECT_EQ(names.size(), static_cast<std::size_t>(threads * each));
    EXPECT_EQ(idsOf("getrecords", {{"module", "Leads"}}).size(), 250u + threads * each);
    EXPECT_EQ(control("changes", "changes").size(), 2u * threads * each);
}

TEST_F(ChangeTests, AControlCallChangesAllOrNothing) {
    auto post = [&](const std::string& body) { return client->postJson("/control/records", body); };
    const std::string added = R"({"module":"Deals","add":[{"Deal_Name":"a","Modified_Time":"2020-01-01T00:00:00Z"})",
                      deleted = R"("delete":[")" + idOf("Deals", 9) + "\"]}";
    EXPECT_EQ(post(added + ",{}]," + deleted)->status, 400) << "an empty record";
    EXPECT_TRUE(control("records?module=Deals&changed=true", "records").empty());
    auto answer = post(added + "]," + deleted);
    auto changed = control("records?module=Deals&changed=true", "records");
    ASSERT_EQ(changed.size(), 1u);
    EXPECT_EQ(at(json(answer), "added"), Value(ValueList{at(changed[0], "id")}));
    EXPECT_EQ(at(changed[0], "Modified_Time"), Value("2020-01-01T00:00:00Z"));
    for (const auto* wrong : {"", "[]", R"({"module":"X"})", R"({"module":"Deals","add":{}})",
                              R"({"module":"Deals","account":"99"})", R"({"module":"Deals","delete":[1]})"})
        EXPECT_EQ(post(wrong)->status, 400) << wrong;
    for (const auto* wrong : {"", R"({"module":"Leads","unique":["X"]})", R"({"module":"Leads","refuse":["look"]})",
                              R"({"module":"Leads","keepKeys":1})", R"({"module":"Leads","answer":"short"})"})
        EXPECT_EQ(client->postJson("/control/rules", wrong)->status, 400) << wrong;
}

}  // namespace
}  // namespace tarvo::sandbox::tests
