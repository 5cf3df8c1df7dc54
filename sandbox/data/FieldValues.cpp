#include "sandbox/data/FieldValues.h"

#include <algorithm>
#include <charconv>
#include <chrono>

#include "platform/Text.h"
#include "sandbox/JsonText.h"

namespace tarvo::sandbox {
namespace {

using Cell = RecordShape::Cell;
using Kind = RecordValue::Kind;

constexpr std::int64_t day = 24 * 3600;
constexpr auto maxRowsBelow = RecordShape::maxRowsBelow;
constexpr std::size_t longTextBytes = 100'000;

constexpr std::string_view firstNames[] = {"Amélie", "Björn", "Chidi", "Dana",  "Eszter", "Farid", "Grace",
                                           "美咲",   "José",  "Łucja", "Oluwa", "Niamh",  "Zoë",   "Ivan"};
constexpr std::string_view lastNames[] = {"O'Neill", "Müller", "Okafor", "Silva",  "Nagy", "Haddad", "Hopper",
                                          "佐藤",    "García", "Nowak",  "D'Arcy", "Weiß", "Lam",    "van den Berg"};
constexpr std::string_view companies[] = {"Nordwind GmbH", "Smith & Sons", "Brightwater", "Café Été",    "北海道商事",
                                          "Acme \"East\"", "O'Brien Ltd.", "Łódź Steel",  "100% Organic"};
constexpr std::string_view cities[] = {"Berlin", "São Paulo", "Zürich", "東京", "Chennai", "Austin", "Kraków", "Cork"};
constexpr std::string_view states[] = {"BE", "SP", "ZH", "東京都", "Tamil Nadu", "TX", "Małopolskie", "Munster"};
constexpr std::string_view countries[] = {"Germany", "Brazil", "Switzerland", "日本",
                                          "India",   "USA",    "Poland",      "Ireland"};
constexpr std::string_view phrases[] = {"Send the offer",   "Call back",       "Visit the plant", "Renew the contract",
                                        "Prepare the demo", "Check the order", "Follow up",       "Plan the roll-out"};
// These texts trip up quoting, escaping, counting of characters and searching.
constexpr std::string_view awkward[] = {
    "He said \"yes\" & 'no'", "C:\\temp\\50%_off", "🚀 Lançamento 👩‍👩‍👧‍👦",
    "日本語のテキスト",       "مرحبا بالعالم",     "tab\tand\nnew line",
    "{2} ${id} NULL",         "SUBJECT",           "<b>bold</b>; -- '",
    " spaces around "};
constexpr std::string_view zones[] = {"Z", "+00:00", "+05:30", "-08:00", "+01:00", "+09:00", "-03:30"};
constexpr std::int64_t zoneSeconds[] = {0, 0, 19800, -28800, 3600, 32400, -12600};

std::string_view pick(Cell& cell, std::span<const std::string_view> choices) { return cell.random.oneOf(choices); }

void appendPadded(std::string& text, std::int64_t number, int digits) {
    char buffer[8];
    for (int i = digits - 1; i >= 0; --i, number /= 10) buffer[i] = static_cast<char>('0' + number % 10);
    text.append(buffer, static_cast<std::size_t>(digits));
}

void appendNumber(std::string& text, std::int64_t number) {
    char buffer[24];
    text.append(buffer, std::to_chars(std::begin(buffer), std::end(buffer), number).ptr);
}

std::int64_t dayOf(std::int64_t seconds) { return (seconds - (seconds % day + day) % day) / day; }

void appendDate(std::string& text, std::int64_t days) {
    std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(days))};
    appendPadded(text, static_cast<int>(date.year()), 4);
    text += '-';
    appendPadded(text, static_cast<unsigned>(date.month()), 2);
    text += '-';
    appendPadded(text, static_cast<unsigned>(date.day()), 2);
}

void setDate(RecordValue& into, std::int64_t days) {
    into.setText("");
    appendDate(into.text, days);
}

void appendClock(std::string& text, std::int64_t ofDay) {
    appendPadded(text, ofDay / 3600, 2);
    text += ':';
    appendPadded(text, ofDay / 60 % 60, 2);
    text += ':';
    appendPadded(text, ofDay % 60, 2);
}

void setDateTime(RecordValue& into, std::int64_t seconds, std::size_t zone) {
    auto local = seconds + zoneSeconds[zone];
    into.setText("");
    appendDate(into.text, dayOf(local));
    into.text += 'T';
    appendClock(into.text, local - dayOf(local) * day);
    into.text += zones[zone];
}

// All times of a record are written in one zone.
std::size_t zoneOf(const Cell& cell) {
    static const auto salt = saltOf("zone");
    return cell.shape.random(cell.number, salt).below(std::size(zones));
}

void setHundredths(RecordValue& into, std::int64_t hundredths) {
    into.setText(hundredths < 0 ? "-" : "");
    auto size = std::abs(hundredths);
    appendNumber(into.text, size / 100);
    into.text += '.';
    appendPadded(into.text, size % 100, 2);
}

void setInteger(RecordValue& into, std::int64_t number) {
    into.setText("");
    appendNumber(into.text, number);
}

void setFlag(RecordValue& into, bool flag) { into.setText(flag ? "true" : "false"); }

// The functions below make values by type.

void makeText(Cell& cell, RecordValue& into) {
    into.setText(cell.random.below(8) == 0 ? pick(cell, awkward) : pick(cell, phrases));
    if (!cell.field.data->isUnique) return;
    into.text += ' ';
    appendNumber(into.text, static_cast<std::int64_t>(cell.number) + 1);
}

void makeLongText(Cell& cell, RecordValue& into) {
    into.setText("");
    bool isLong = cell.number == RecordShape::completeRecord;
    auto least = cell.field.data->isMandatory ? 1 : 0;
    auto parts = isLong ? longTextBytes : least + cell.random.below(3);
    for (std::size_t i = 0; i < parts && into.text.size() < longTextBytes; ++i) {
        if (i > 0) into.text += i % 5 == 0 ? "\n" : ". ";
        into.text += cell.random.below(6) == 0 ? pick(cell, awkward) : pick(cell, phrases);
    }
}

void makeEmail(Cell& cell, RecordValue& into) {
    into.setText("mail.");
    appendNumber(into.text, static_cast<std::int64_t>(cell.number) + 1);
    into.text += cell.random.below(2) == 0 ? "@example.com" : "+crm@mail.example.org";
}

void makePhone(Cell& cell, RecordValue& into) {
    into.setText(cell.random.below(2) == 0 ? "+49 30 " : "(555) ");
    appendPadded(into.text, static_cast<std::int64_t>(cell.random.below(10'000'000)), 7);
}

void makeWebsite(Cell& cell, RecordValue& into) {
    into.setText("https://www.example.com/%7Ec/?id=");
    appendNumber(into.text, static_cast<std::int64_t>(cell.number) + 1);
}

// Lists hold the text that people see.
void makePicklist(Cell& cell, RecordValue& into) {
    const auto& values = cell.field.data->picklist;
    into.setText(values.empty() ? "" : values[cell.random.below(values.size())].label);
}

void makePicklists(Cell& cell, RecordValue& into) {
    into.kind = Kind::texts;
    auto chosen = cell.random.below(8);
    const auto& values = cell.field.data->picklist;
    for (std::size_t i = 0; i < values.size(); ++i)
        if (chosen >> i & 1) into.texts.push_back(values[i].label);
}

void makeInteger(Cell& cell, RecordValue& into) { setInteger(into, static_cast<std::int64_t>(cell.random.below(500))); }

void makeBigInteger(Cell& cell, RecordValue& into) {
    auto number = static_cast<std::int64_t>(cell.number);
    setInteger(into, 900'000'000'000'000'000 + number * 1000 + static_cast<std::int64_t>(cell.random.below(1000)));
}

void makeAmount(Cell& cell, RecordValue& into) {
    auto size = static_cast<std::int64_t>(cell.random.below(100'000'000));
    setHundredths(into, cell.random.below(40) == 0 ? -size : size);
}

void makeDecimal(Cell& cell, RecordValue& into) {
    setHundredths(into, static_cast<std::int64_t>(cell.random.below(10'000)));
}

void makeAutoNumber(Cell& cell, RecordValue& into) {
    into.setText("N-");
    appendNumber(into.text, static_cast<std::int64_t>(cell.number) + 1);
}

void makeFlag(Cell& cell, RecordValue& into) { setFlag(into, cell.random.below(2) == 0); }

void makeDate(Cell& cell, RecordValue& into) {
    auto offset = static_cast<std::int64_t>(cell.random.below(500)) - 100;
    setDate(into, dayOf(cell.shape.createdTime(cell.number)) + offset);
}

void makeDateTime(Cell& cell, RecordValue& into) {
    auto offset = static_cast<std::int64_t>(cell.random.below(static_cast<std::uint64_t>(400 * day)));
    setDateTime(into, cell.shape.createdTime(cell.number) + offset, zoneOf(cell));
}

void setUser(Cell& cell, std::size_t number, RecordValue& into) {
    const auto& context = cell.shape.context();
    into.setText(context.data.users[number].id);
    into.shown = context.userTitles[number];
}

void makeUser(Cell& cell, RecordValue& into) {
    setUser(cell, cell.random.below(cell.shape.context().data.users.size()), into);
}

/// Names a record that another one points to.
struct Pointed {
    const RecordShape* shape = nullptr;
    std::size_t number = 0;
    explicit operator bool() const { return shape && number < shape->count(); }
};

void setPointed(const Pointed& pointed, RecordValue& into) {
    if (!pointed) return into.setText("");
    into.kind = Kind::text;
    pointed.shape->readId(pointed.number, into.text);
    pointed.shape->readTitle(pointed.number, into.shown);
}

Pointed anyOf(const RecordShape* shape, Generator& random) {
    return {shape, shape && shape->count() > 0 ? random.below(shape->count()) : 0};
}

// Every fourth attachment hangs on the note of its number, every tenth note is about a meeting's check-in.
bool hasAttachment(std::size_t note) { return note % 4 == 1; }
bool tellsCheckIn(std::size_t note) { return note % 10 == 9; }

// Chooses the record that `What_Id` or `Parent_Id` points to; the fields beside them name its module.
Pointed parentOf(const Cell& cell) {
    static constexpr std::string_view parents[] = {"Accounts", "Deals", "Leads", "Contacts"};
    static const auto salt = saltOf("parent");
    auto random = cell.shape.random(cell.number, salt);
    const auto& module = cell.shape.module().name;
    if (module == "Attachments" && hasAttachment(cell.number)) return {cell.shape.sibling("Notes"), cell.number};
    if (module == "Notes" && tellsCheckIn(cell.number)) return anyOf(cell.shape.sibling("Events"), random);
    bool mayStandAlone = module != "Attachments" && module != "Notes";
    if (mayStandAlone && random.below(8) == 0) return {};
    return anyOf(cell.shape.sibling(random.oneOf(parents)), random);
}

void makeLookup(Cell& cell, RecordValue& into) {
    if (cell.field.data->target == "se_module") return setPointed(parentOf(cell), into);
    setPointed(anyOf(cell.field.target, cell.random), into);
}

void makeLookups(Cell& cell, RecordValue& into) {
    into.kind = Kind::texts;
    auto first = anyOf(cell.field.target, cell.random);
    auto wanted = 1 + cell.random.below(3);
    for (; first && into.texts.size() < wanted; ++first.number) into.texts.push_back(first.shape->id(first.number));
}

void makeRows(Cell& cell, RecordValue& into) {
    into.kind = Kind::rows;
    if (!cell.field.target) return;
    auto count = cell.random.below(4);
    for (std::size_t i = 0; i < count; ++i)
        into.rows.push_back(
            RecordData(*cell.field.target, RecordShape::numberBelow(cell.number, cell.field.place, i)).row());
}

void makeRepeat(Cell& cell, RecordValue& into) {
    if (cell.random.below(4) != 0) return into.setText("");
    auto start = dayOf(cell.shape.createdTime(cell.number));
    into.setText("FREQ=WEEKLY;INTERVAL=1;BYDAY=MO,TH;DTSTART=");
    appendDate(into.text, start);
    into.text += ";UNTIL=";
    appendDate(into.text, start + 180);
}

void makeAlarm(Cell& cell, RecordValue& into) {
    if (cell.random.below(4) != 0) return into.setText("");
    RecordValue time;
    setDateTime(time, cell.shape.createdTime(cell.number) + 7 * day, zoneOf(cell));
    into.setText("FREQ=NONE;ACTION=EMAIL;TRIGGER=DATE-TIME:" + time.text);
}

void makeFileName(Cell& cell, RecordValue& into) {
    static constexpr std::string_view names[] = {"offer.pdf", "Übersicht 2024.xlsx", "photo (1).jpg", "計画.docx"};
    into.setText(pick(cell, names));
}

void makeEmpty(Cell&, RecordValue& into) { into.setText(""); }

// The functions below make values of single fields.

void makeId(Cell& cell, RecordValue& into) {
    into.kind = Kind::text;
    cell.shape.readId(cell.number, into.text);
}

void makeLayout(Cell& cell, RecordValue& into) {
    const auto& layouts = cell.shape.context().data.metadata.find(cell.shape.module().name)->second.layouts;
    std::size_t usable = 0;
    while (usable < layouts.size() && layouts[usable].isAccessible) ++usable;
    if (usable == 0) return;
    const auto& layout = layouts[cell.random.below(usable)];
    into.setText(layout.id);
    into.shown.assign({layout.name});
}

void makeTags(Cell& cell, RecordValue& into) {
    const auto& tags = cell.shape.tags();
    if (tags.empty()) return;
    into.kind = Kind::rows;
    auto chosen = cell.random.below(16);
    for (std::size_t i = 0; i < tags.size() && i < 4; ++i) {
        if ((chosen >> i & 1) == 0) continue;
        RecordValue id, name;
        id.setText(tags[i]->id);
        name.setText(tags[i]->name);
        into.rows.push_back({{{"id", "[\"id\",", std::move(id)}, {"name", "[\"name\",", std::move(name)}}});
    }
}

void makeCreatedTime(Cell& cell, RecordValue& into) {
    setDateTime(into, cell.shape.createdTime(cell.number), zoneOf(cell));
}

void makeModifiedTime(Cell& cell, RecordValue& into) {
    setDateTime(into, cell.shape.modifiedTime(cell.number), zoneOf(cell));
}

void makeFirstName(Cell& cell, RecordValue& into) { into.setText(pick(cell, firstNames)); }
void makeLastName(Cell& cell, RecordValue& into) { into.setText(pick(cell, lastNames)); }
void makeCity(Cell& cell, RecordValue& into) { into.setText(pick(cell, cities)); }
void makeState(Cell& cell, RecordValue& into) { into.setText(pick(cell, states)); }
void makeCountry(Cell& cell, RecordValue& into) { into.setText(pick(cell, countries)); }

// The leading zero tests that clients keep it.
void makeZip(Cell& cell, RecordValue& into) {
    into.setText("");
    appendPadded(into.text, static_cast<std::int64_t>(cell.random.below(100'000)), 5);
}

void makeFullName(Cell& cell, RecordValue& into) {
    std::vector<std::string> title;
    cell.shape.readTitle(cell.number, title);
    into.setText(title.back());
}

void makeCompany(Cell& cell, RecordValue& into) {
    into.setText(pick(cell, companies));
    into.text += ' ';
    appendNumber(into.text, static_cast<std::int64_t>(cell.number) + 1);
}

// Some people were born before 1970.
void makeBirthday(Cell& cell, RecordValue& into) {
    setDate(into, static_cast<std::int64_t>(cell.random.below(24'000)) - 11'000);
}

void makeExchangeRate(Cell& cell, RecordValue& into) {
    auto currency = cell.shape.value("Currency", cell.number).text;
    into.setText(currency == "EUR" ? "0.92" : currency == "JPY" ? "147.5" : "1");
}

void makeMargin(Cell& cell, RecordValue& into) {
    auto revenue = text::toReal(cell.shape.value("Annual_Revenue", cell.number).text);
    if (!revenue) return into.setText("");
    setHundredths(into, static_cast<std::int64_t>(*revenue * 10));
}

void makeSeModule(Cell& cell, RecordValue& into) {
    auto parent = parentOf(cell);
    into.setText(parent ? parent.shape->module().name : "");
}

void makeActivityType(Cell& cell, RecordValue& into) { into.setText(cell.shape.module().name); }

std::int64_t startOf(const Cell& cell) {
    static const auto salt = saltOf("start");
    auto steps = static_cast<std::int64_t>(cell.shape.random(cell.number, salt).below(90 * 96));
    return (cell.shape.createdTime(cell.number) / 900 + steps) * 900;
}

void makeStart(Cell& cell, RecordValue& into) { setDateTime(into, startOf(cell), zoneOf(cell)); }

void makeEnd(Cell& cell, RecordValue& into) {
    auto minutes = 30 + 15 * static_cast<std::int64_t>(cell.random.below(10));
    setDateTime(into, startOf(cell) + minutes * 60, zoneOf(cell));
}

void makeDuration(Cell& cell, RecordValue& into) {
    into.setText("");
    appendPadded(into.text, static_cast<std::int64_t>(cell.random.below(60)), 2);
    into.text += ':';
    appendPadded(into.text, static_cast<std::int64_t>(cell.random.below(60)), 2);
}

void makeIsCheckIn(Cell& cell, RecordValue& into) { setFlag(into, tellsCheckIn(cell.number)); }

// A note of a check-in has the facts of the check-in beside its meeting: the title, then the place.
void makeNoteParent(Cell& cell, RecordValue& into) {
    setPointed(parentOf(cell), into);
    if (!tellsCheckIn(cell.number) || into.shown.empty()) return;
    for (auto fact : {"52.52", "13.405", "Alexanderplatz", "Berlin", "BE", "Germany", "10178"})
        into.shown.push_back(fact);
}

void makeAttachments(Cell& cell, RecordValue& into) {
    into.kind = Kind::rows;
    const auto* shape = cell.shape.sibling("Attachments");
    if (shape && hasAttachment(cell.number) && cell.number < shape->count())
        into.rows.push_back(RecordData(*shape, cell.number).row());
}

void makeSize(Cell& cell, RecordValue& into) {
    setInteger(into, static_cast<std::int64_t>(cell.random.below(5'000'000)));
}

/// Lists who takes part in a meeting: users, contacts and leads in turn, each at most once.
struct Participant {
    std::string_view kind;
    std::string id, name, email;
};

Participant participantOf(const Cell& cell) {
    static constexpr std::string_view kinds[] = {"user", "contact", "lead"};
    auto event = RecordShape::numberAbove(cell.number), row = cell.number % maxRowsBelow;
    auto kind = kinds[row % std::size(kinds)];
    const auto& users = cell.shape.context().data.users;
    const auto* people = kind == "user" ? nullptr : cell.shape.sibling(kind == "lead" ? "Leads" : "Contacts");
    if (!people || people->count() == 0) {
        const auto& user = users[(event + row) % users.size()];
        return {"user", user.id, user.name(), user.email};
    }
    auto number = (event * 7 + row) % people->count();
    std::vector<std::string> title;
    people->readTitle(number, title);
    return {kind, people->id(number), title.back(), people->value("Email", number).text};
}

void makeParticipant(Cell& cell, RecordValue& into) { into.setText(participantOf(cell).id); }
void makeParticipantKind(Cell& cell, RecordValue& into) { into.setText(participantOf(cell).kind); }
void makeParticipantName(Cell& cell, RecordValue& into) { into.setText(participantOf(cell).name); }
void makeParticipantEmail(Cell& cell, RecordValue& into) { into.setText(participantOf(cell).email); }

void makeParticipantStatus(Cell& cell, RecordValue& into) {
    static constexpr std::string_view answers[] = {"yes", "maybe", "not_known", "no"};
    into.setText(pick(cell, answers));
}

void makeUserName(Cell& cell, RecordValue& into) {
    const auto& users = cell.shape.context().data.users;
    into.setText(users[cell.random.below(users.size())].name());
}

struct TypeMaker {
    std::string_view type;
    RecordShape::Make make;
};

constexpr TypeMaker byType[] = {
    {"text", makeText},
    {"textarea", makeLongText},
    {"email", makeEmail},
    {"phone", makePhone},
    {"website", makeWebsite},
    {"picklist", makePicklist},
    {"multiselectpicklist", makePicklists},
    {"integer", makeInteger},
    {"bigint", makeBigInteger},
    {"double", makeDecimal},
    {"decimal", makeDecimal},
    {"currency", makeAmount},
    {"autonumber", makeAutoNumber},
    {"boolean", makeFlag},
    {"event_reminder", makeFlag},
    {"date", makeDate},
    {"datetime", makeDateTime},
    {"ownerlookup", makeUser},
    {"userlookup", makeUser},
    {"lookup", makeLookup},
    {"multiselectlookup", makeLookups},
    {"subform", makeRows},
    {"event_participant", makeRows},
    {"RRULE", makeRepeat},
    {"ALARM", makeAlarm},
    {"fileupload", makeFileName},
    {"profileimage", makeFileName},
};

struct FieldMaker {
    /// Empty for every module.
    std::string_view module;
    std::string_view apiName;
    RecordShape::Make make;
};

constexpr FieldMaker byName[] = {
    {"", "id", makeId},
    {"", "Layout", makeLayout},
    {"", "Tag", makeTags},
    {"", "$status", makeEmpty},
    {"", "Created_Time", makeCreatedTime},
    {"", "Modified_Time", makeModifiedTime},
    {"", "First_Name", makeFirstName},
    {"", "Last_Name", makeLastName},
    {"", "Full_Name", makeFullName},
    {"", "Company", makeCompany},
    {"Accounts", "Account_Name", makeCompany},
    {"", "Birthday", makeBirthday},
    {"", "Date_of_Birth", makeBirthday},
    {"", "City", makeCity},
    {"", "Mailing_City", makeCity},
    {"", "Check_In_City", makeCity},
    {"", "Other_City", makeCity},
    {"", "State", makeState},
    {"", "Mailing_State", makeState},
    {"", "Check_In_State", makeState},
    {"", "Other_State", makeState},
    {"", "Country", makeCountry},
    {"", "Mailing_Country", makeCountry},
    {"", "Check_In_Country", makeCountry},
    {"", "Other_Country", makeCountry},
    {"", "Zip_Code", makeZip},
    {"", "ZIP_Code", makeZip},
    {"", "Mailing_Zip", makeZip},
    {"", "Other_Zip", makeZip},
    {"", "EVENTTYPE", makeEmpty},
    {"", "Exchange_Rate", makeExchangeRate},
    {"", "Margin", makeMargin},
    {"", "$se_module", makeSeModule},
    {"", "se_module", makeSeModule},
    {"", "Activity_Type", makeActivityType},
    {"", "Start_Date_Time", makeStart},
    {"", "End_Date_Time", makeEnd},
    {"", "Call_Duration", makeDuration},
    {"", "$isCheckIn", makeIsCheckIn},
    {"Notes", "Parent_Id", makeNoteParent},
    {"", "$attachments", makeAttachments},
    {"", "Attachment_Size", makeSize},
    {"", "File_Name", makeFileName},
    {"EventInvitees", "participant", makeParticipant},
    {"EventInvitees", "Type", makeParticipantKind},
    {"EventInvitees", "name", makeParticipantName},
    {"EventInvitees", "Email", makeParticipantEmail},
    {"EventInvitees", "Status", makeParticipantStatus},
    {"", "Comment_By", makeUserName},
};

}  // namespace

RecordShape::Make makerOf(std::string_view module, const FieldData& field) {
    for (const auto& row : byName)
        if (row.apiName == field.apiName && (row.module.empty() || row.module == module)) return row.make;
    for (const auto& row : byType)
        if (row.type == field.type) return row.make;
    return makeEmpty;
}

}  // namespace tarvo::sandbox
