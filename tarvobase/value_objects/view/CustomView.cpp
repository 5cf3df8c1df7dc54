#include "tarvobase/value_objects/view/CustomView.h"

namespace tarvo {

CustomViewList::CustomViewList(std::vector<CustomView> cvArray) {
    for (auto& view : cvArray) {
        auto id = view.viewID;
        cvList.insert_or_assign(std::move(id), std::move(view));
    }
}

const CustomView* CustomViewList::default_() const {
    for (auto& [id, view] : cvList)
        if (view.isDefault) return &view;
    return nullptr;
}

const CustomView* CustomViewList::operator[](const std::string& viewID) const {
    auto found = cvList.find(viewID);
    return found == cvList.end() ? nullptr : &found->second;
}

}  // namespace tarvo
