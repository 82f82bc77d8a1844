#include "sonar/DataFormatWarning.h"

#include "app/OverallConfig.h"

namespace halvo {

bool DataFormatWarning::OnOperatorChange(int configType, int oldDataType, int newDataType) {
    if (configType != OverallConfig::kConfigSBRC900 || oldDataType == newDataType) return false;
    return !shown_.exchange(true, std::memory_order_acq_rel);
}

}  // namespace halvo
