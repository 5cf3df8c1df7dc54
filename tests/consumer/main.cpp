#include "platform/MainQueue.h"
#include "tarvobase/get_metadata/GetModulesUC.h"

int main() {
    std::make_shared<tarvo::GetModulesUC>()->execute(tarvo::GetModulesUC::Request({"Leads"}),
                                                     [](auto*, auto*) { tarvo::MainQueue::shared()->stop(); });
    tarvo::MainQueue::shared()->run();
}
