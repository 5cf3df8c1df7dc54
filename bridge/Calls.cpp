#include "bridge/Calls.h"

#include "tarvobase/get_metadata/GetModulesUC.h"

namespace tarvo::bridge {

void addCalls(Registry& registry) { registry.addUsecase<GetModulesUC>("GetModulesUC"); }

}  // namespace tarvo::bridge
