#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/Describe.h"

namespace tarvo {

/// Identifies a module: one that the library knows, a custom one, or an unknown one. The raw text is the module's
/// internal name.
class ModuleIdentifier {
public:
    enum class Case {
        custom,
        unsupportedOrNew,
        accounts,
        activities,
        approvals,
        attachments,
        calls,
        campaigns,
        cases,
        checkIns,
        comments,
        contacts,
        consents,
        dashboards,
        deals,
        documents,
        emails,
        events,
        eventInvitees,
        feeds,
        home,
        invoices,
        leads,
        notes,
        pricebooks,
        products,
        purchaseOrders,
        quotes,
        reports,
        salesOrders,
        solutions,
        tasks,
        vendors,
        forecasts,
        setting,
        social,
        visits,
        messages,
        owners
    };

    /// Makes one of the plain cases.
    ModuleIdentifier(Case plain) : case_(plain) {}  // NOLINT: implicit, so that a plain case is an identifier by itself
    static ModuleIdentifier custom(std::string name) { return {Case::custom, std::move(name)}; }
    static ModuleIdentifier unsupportedOrNew(std::string name) { return {Case::unsupportedOrNew, std::move(name)}; }

    /// Returns the identifier of a module name. An unknown name is logged and returned as `unsupportedOrNew`.
    static ModuleIdentifier fromModuleName(const std::string& moduleName);
    /// The same, but returns nullopt for an unknown name after logging it.
    static std::optional<ModuleIdentifier> fromRawValue(const std::string& rawValue);

    Case which() const { return case_; }
    std::string rawValue() const;

    bool isActivityModule() const;
    static bool isActivityModule(std::string_view moduleName);
    static bool isInventoryModule(std::string_view moduleName);
    bool isUnsupportedModule() const { return case_ == Case::campaigns; }

    friend bool operator==(const ModuleIdentifier&, const ModuleIdentifier&) = default;

private:
    ModuleIdentifier(Case which, std::string name) : case_(which), name_(std::move(name)) {}
    static std::optional<ModuleIdentifier> known(const std::string& name);
    Case case_;
    std::string name_;  // of `custom` and `unsupportedOrNew`
};

/// The plain cases with their raw texts.
template <>
struct EnumCases<ModuleIdentifier::Case> {
    using C = ModuleIdentifier::Case;
    static constexpr EnumCase<C> cases[] = {{C::accounts, "accounts", "Accounts"},
                                            {C::activities, "activities", "Activities"},
                                            {C::approvals, "approvals", "Approvals"},
                                            {C::attachments, "attachments", "Attachments"},
                                            {C::calls, "calls", "Calls"},
                                            {C::campaigns, "campaigns", "Campaigns"},
                                            {C::cases, "cases", "Cases"},
                                            {C::checkIns, "checkIns", "CheckIns"},
                                            {C::comments, "comments", "CustomerModuleComments"},
                                            {C::contacts, "contacts", "Contacts"},
                                            {C::consents, "consents", "Consents"},
                                            {C::dashboards, "dashboards", "Dashboards"},
                                            {C::deals, "deals", "Deals"},
                                            {C::documents, "documents", "Documents"},
                                            {C::emails, "emails", "Emails"},
                                            {C::events, "events", "Events"},
                                            {C::eventInvitees, "eventInvitees", "EventInvitees"},
                                            {C::feeds, "feeds", "Feeds"},
                                            {C::home, "home", "Home"},
                                            {C::invoices, "invoices", "Invoices"},
                                            {C::leads, "leads", "Leads"},
                                            {C::notes, "notes", "Notes"},
                                            {C::pricebooks, "pricebooks", "PriceBooks"},
                                            {C::products, "products", "Products"},
                                            {C::purchaseOrders, "purchaseOrders", "PurchaseOrders"},
                                            {C::quotes, "quotes", "Quotes"},
                                            {C::reports, "reports", "Reports"},
                                            {C::salesOrders, "salesOrders", "SalesOrders"},
                                            {C::solutions, "solutions", "Solutions"},
                                            {C::tasks, "tasks", "Tasks"},
                                            {C::vendors, "vendors", "Vendors"},
                                            {C::forecasts, "forecasts", "Forecasts"},
                                            {C::setting, "setting", "Settings"},
                                            {C::social, "social", "Social"},
                                            {C::visits, "visits", "Visits"},
                                            {C::messages, "messages", "Messages"},
                                            {C::owners, "owners", "Owners"}};
};

}  // namespace tarvo
