#pragma once

#include <string>

#include "tarvobase/usecase/ErrorProtocols.h"

namespace tarvo {

/// Receives the notices of an error interface as texts, on the thread of the notice: its name and its arguments.
template <class Relay>
class NoticeListener : public Relay {
protected:
    virtual void noticed(const std::string& notice) = 0;

private:
    void relay(const typename Relay::Notice& notice) override {
        std::string text(caseName(notice.kind));
        for (auto& argument : notice.arguments) text += " " + argument.value.toText().value_or("");
        noticed(text);
    }
};

}  // namespace tarvo
