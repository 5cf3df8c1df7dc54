#include "tarvobase/value_objects/CompanyInfo.h"

namespace tarvo {

namespace {

const auto companyForm = form<CompanyInfo, CompanyInfoConstants>(
    member(&CompanyInfo::key, &CompanyInfoConstants::Key), member(&CompanyInfo::value, &CompanyInfoConstants::Value));

}  // namespace

ValueMap CompanyInfoConstants::getDictionary(const CompanyInfo& info) const {
    return companyForm.toMap(info, *this, Form::plain);
}
CompanyInfo CompanyInfoConstants::getCompanyInfo(const ValueMap& map) const {
    return companyForm.read(map, *this, Form::plain);
}
ValueMap CompanyInfoDatabaseConstants::getDictionary(const CompanyInfo& info) const {
    return companyForm.toMap(info, *this, Form::table);
}
CompanyInfo CompanyInfoDatabaseConstants::getCompanyInfo(const Row& row) const {
    return companyForm.read(row, *this, Form::table);
}

InMemoryPropertyValue propertyForKey(const CompanyInfo& info, std::string_view key) {
    return propertyOf(companyForm, info, key, CompanyInfoConstants());
}

}  // namespace tarvo
