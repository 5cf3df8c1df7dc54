#include "sandbox/data/DataSet.h"

#include <algorithm>

#include "sandbox/data/Modules.h"

namespace tarvo::sandbox {
namespace {

constexpr std::size_t leastUsers = 8;
constexpr std::string_view userFirstNames[] = {"Amélie", "Björn", "Chidi", "Dana", "Eszter",
                                               "Farid",  "Grace", "美咲",  "José", "Łucja"};
constexpr std::string_view userLastNames[] = {"O'Neill", "Müller", "Okafor", "Silva",  "Nagy",
                                              "Haddad",  "Hopper", "佐藤",   "García", "Nowak"};
constexpr std::string_view roles[] = {"Manager", "Sales Representative", "Support Engineer"};
constexpr std::string_view tagNames[] = {"Hot", "Follow up", "Été", "Q4", "VIP", "Do not call"};
constexpr std::string_view taggedModules[] = {"Leads", "Contacts", "Accounts", "Deals",
                                              "Tasks", "Events",   "Calls",    "CustomModule1"};

std::vector<UserData> makeUsers(IdSequence& ids, Generator& random, const Accounts& accounts,
                                const std::string& mailDomain) {
    auto administrator = ids.next();
    auto standard = ids.next();
    std::vector<std::string> accountIds;
    for (const auto& account : accounts.all())
        if (std::find(accountIds.begin(), accountIds.end(), account.id) == accountIds.end())
            accountIds.push_back(account.id);
    std::vector<UserData> users;
    while (users.size() < std::max(leastUsers, accountIds.size())) {
        auto number = users.size();
        bool isFirst = number == 0;
        auto account = number < accountIds.size() ? accountIds[number] : "7990" + std::to_string(10000 + number);
        users.push_back({ids.next(), std::string(random.oneOf(userFirstNames)),
                         std::string(random.oneOf(userLastNames)), account,
                         "user" + std::to_string(number + 1) + "@" + mailDomain, "active",
                         isFirst ? "CEO" : std::string(random.oneOf(roles)), number % 4 != 3,
                         isFirst ? "Administrator" : "Standard", isFirst ? administrator : standard, "Europe/Berlin"});
    }
    return users;
}

std::vector<TagData> makeTags(IdSequence& ids, Generator& random) {
    std::vector<TagData> tags;
    for (auto module : taggedModules)
        for (auto name : tagNames)
            if (random.below(3) != 0) tags.push_back({ids.next(), std::string(name), std::string(module)});
    return tags;
}

}  // namespace

DataSet::DataSet(std::uint64_t seed, const Accounts& accounts, std::size_t recordsPerModule,
                 const std::string& mailDomain)
    : ids(seed) {
    Generator random(seed);
    modules = makeModules(ids);
    users = makeUsers(ids, random, accounts, mailDomain);
    organisations = {{ids.next(), "Brightwater Trading", true}, {ids.next(), "Brightwater Café & Söhne", false}};
    companyInfo = {{"CompanyName", "Brightwater Trading"},
                   {"CurrencyLocale", "en_US"},
                   {"CurrencySymbol", "$"},
                   {"Currency", "USD"},
                   {"Country", "US"},
                   {"TimeZone", "America/New_York"},
                   {"MultiCurrency", "true"}};
    tags = makeTags(ids, random);
    metadata = makeMetadata(modules, ids);
    records = std::make_unique<RecordStore>(*this, seed, recordsPerModule);
    views = makeViews(*this, ids);
    currencies = makeCurrencies(ids);
    taxes = makeTaxes(ids);
    dealStages = makeDealStages(*this, ids);
}

const ModuleData* DataSet::module(std::string_view nameOrApiName) const {
    for (const auto& module : modules)
        if (module.name == nameOrApiName) return &module;
    for (const auto& module : modules)
        if (module.apiName == nameOrApiName) return &module;
    return nullptr;
}

const UserData& DataSet::userOf(std::string_view account) const {
    for (const auto& user : users)
        if (user.account == account) return user;
    return users.front();
}

}  // namespace tarvo::sandbox
