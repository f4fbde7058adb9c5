#include "trace/server/VariantVisit.h"

namespace kinora::trace {

ArrayAccess::ArrayAccess(SAFEARRAY* array) : m_array(array) {
    if (array == nullptr || FAILED(SafeArrayAccessData(array, &m_data))) {
        m_array = nullptr;
        return;
    }
    m_count = array->cDims == 0 ? 0 : 1;
    for (USHORT i = 0; i < array->cDims; ++i) {
        m_count *= array->rgsabound[i].cElements;
    }
}

ArrayAccess::~ArrayAccess() {
    if (m_array != nullptr) {
        SafeArrayUnaccessData(m_array);
    }
}

} // namespace kinora::trace
