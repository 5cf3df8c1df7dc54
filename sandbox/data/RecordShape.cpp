#include "sandbox/data/RecordShape.h"

#include <algorithm>
#include <charconv>

#include "platform/Text.h"
#include "sandbox/JsonText.h"
#include "sandbox/data/FieldTable.h"
#include "sandbox/data/FieldValues.h"

namespace tarvo::sandbox {
namespace {

// Ids of records: the organisation's prefix, then nine digits of module and number, beyond those of `IdSequence`.
constexpr std::uint64_t firstRecordId = 100'000'000;
constexpr std::uint64_t idsOfModule = RecordShape::numbersOfModule;
constexpr std::size_t suffixDigits = 9;

constexpr std::int64_t firstCreation = 1'672'531'200;       // 2023-01-01
constexpr std::int64_t creationSpan = 1'277LL * 24 * 3600;  // up to 2026-06-30
constexpr std::int64_t longestUnchanged = 90LL * 24 * 3600;

constexpr std::uint64_t creationSalt = 1, changeSalt = 2;

std::uint64_t mixed(std::uint64_t value) { return Generator(value).number(); }

}  // namespace

std::uint64_t saltOf(std::string_view name) {
    std::uint64_t hash = 0xCBF29CE484222325ULL;
    for (unsigned char c : name) hash = (hash ^ c) * 0x100000001B3ULL;
    return mixed(hash);
}

const std::int64_t RecordShape::endOfSnapshot = firstCreation + creationSpan + longestUnchanged;

RecordShape::RecordShape(const RecordContext& context, const ModuleData& module, std::size_t moduleNumber)
    : context_(context),
      module_(module),
      moduleNumber_(moduleNumber),
      salt_(mixed(context.seed) ^ saltOf(module.name)),
      idPrefix_(std::to_string(IdSequence::prefix(context.seed))) {
    const auto& metadata = context.data.metadata.find(module.name)->second;
    fields_.reserve(metadata.fields.size());
    for (const auto& data : metadata.fields) addField(data);
    for (std::size_t i = 0; i < fields_.size(); ++i) byName_.emplace(fields_[i].name, i);
    firstName_ = field("First_Name");
    lastName_ = firstName_ ? field("Last_Name") : nullptr;
    for (const auto& each : fields_)
        if (!title_ && each.data->type == "text" && !each.data->isKey) title_ = &each;
    for (const auto& tag : context.tags)
        if (tag.module == module.name) tags_.push_back(&tag);
}

void RecordShape::addField(const FieldData& data) {
    std::string entryStart = "[";
    appendJsonText(entryStart, data.apiName);
    entryStart += ',';
    bool isNeeded = data.isMandatory || (data.isReadOnly && data.section != "Check-In") || data.apiName == "Owner" ||
                    data.apiName == "Layout" || data.target == "se_module";
    fields_.push_back({&data, data.apiName, entryStart, makerOf(module_.name, data), saltOf(data.apiName),
                       module_.hasOwnLists && !isNeeded});
}

void RecordShape::connect(const Shapes& shapes) {
    shapes_ = &shapes;
    for (auto& each : fields_) {
        auto apiName = std::string_view(each.data->target);
        if (each.data->type == "event_participant") apiName = "Participants";
        if (const auto* pair =
                each.data->preferences.asMap() ? each.data->preferences.asMap()->find("subform") : nullptr)
            if (pair->asList() && pair->asList()->size() == 2) apiName = *pair->asList()->at(1).asText();
        const auto* module = apiName.empty() ? nullptr : context_.data.module(apiName);
        auto target = module ? shapes.find(module->name) : shapes.end();
        if (target == shapes.end()) continue;
        each.target = target->second.get();
        if (each.data->type == "subform" || each.data->type == "event_participant")
            each.place = target->second->fieldsAbove_++;
    }
}

const RecordShape::Field* RecordShape::field(std::string_view apiName) const {
    auto found = byName_.find(apiName);
    return found == byName_.end() ? nullptr : &fields_[found->second];
}

const RecordShape* RecordShape::sibling(std::string_view module) const {
    auto found = shapes_->find(module);
    return found == shapes_->end() ? nullptr : found->second.get();
}

void RecordShape::read(const Field& field, std::size_t number, RecordValue& into) const {
    into.clear();
    Cell cell{*this, field, number, random(number, field.salt)};
    if (field.isOptional && number != completeRecord) {
        auto chance = cell.random.below(16);
        if (chance == 0) return;
        if (chance < 3) return into.setText("");
    }
    field.make(cell, into);
}

RecordValue RecordShape::value(std::string_view apiName, std::size_t number) const {
    RecordValue value;
    if (const auto* known = field(apiName)) read(*known, number, value);
    return value;
}

std::uint64_t RecordShape::firstId() const { return firstRecordId + moduleNumber_ * idsOfModule; }

std::string RecordShape::id(std::size_t number) const {
    std::string id;
    readId(number, id);
    return id;
}

void RecordShape::readId(std::size_t number, std::string& into) const {
    char digits[suffixDigits];
    std::to_chars(std::begin(digits), std::end(digits), firstId() + number);
    into = idPrefix_;
    into.append(digits, suffixDigits);
}

std::optional<std::size_t> RecordShape::numberOf(std::string_view id) const {
    if (id.size() != idPrefix_.size() + suffixDigits || !id.starts_with(idPrefix_)) return std::nullopt;
    auto suffix = text::toInteger(id.substr(idPrefix_.size()));
    auto first = static_cast<std::int64_t>(firstId());
    if (!suffix || *suffix < first || *suffix >= first + static_cast<std::int64_t>(idsOfModule)) return std::nullopt;
    return static_cast<std::size_t>(*suffix - first);
}

Generator RecordShape::random(std::size_t number, std::uint64_t salt) const {
    return Generator(salt_ ^ mixed(salt + number * 0xD6E8FEB86659FD93ULL));
}

// Older records have lower numbers, whatever their count. Rows are as old as the record above.
std::int64_t RecordShape::createdTime(std::size_t number) const {
    if (!module_.hasOwnLists) number = numberAbove(number);
    auto count = static_cast<std::int64_t>(std::max<std::size_t>(1, context_.recordsPerModule));
    auto step = std::max<std::int64_t>(1, creationSpan / count);
    auto within = static_cast<std::int64_t>(random(number, creationSalt).below(static_cast<std::uint64_t>(step)));
    return firstCreation + static_cast<std::int64_t>(number) * step + within;
}

// Every third record has not been changed since.
std::int64_t RecordShape::modifiedTime(std::size_t number) const {
    auto generator = random(number, changeSalt);
    auto created = createdTime(number);
    if (generator.below(3) == 0) return created;
    return created + static_cast<std::int64_t>(generator.below(longestUnchanged));
}

void RecordShape::readTitle(std::size_t number, std::vector<std::string>& into) const {
    readTitle([&](const Field& field, RecordValue& value) { read(field, number, value); }, into);
}

void RecordShape::readTitle(const ReadField& read, std::vector<std::string>& into) const {
    RecordValue value;
    auto textOf = [&](const Field* field) {
        read(*field, value);
        return value.text;
    };
    into.clear();
    if (lastName_) {
        into.push_back(textOf(lastName_));
        into.push_back(textOf(firstName_));
        into.push_back(into[1].empty() ? into[0] : into[1] + " " + into[0]);
    } else if (title_) {
        into.push_back(textOf(title_));
    }
}

}  // namespace tarvo::sandbox
