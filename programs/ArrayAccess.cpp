#include "programs/ArrayAccess.h"

namespace kinora::programs {

ArrayAccess::ArrayAccess(SAFEARRAY* array) : m_array(array) {
    if (!array || FAILED(SafeArrayAccessData(array, &m_data))) {
        m_array = nullptr;
        return;
    }
    m_count = array->cDims == 0 ? 0 : 1;
    for (USHORT i = 0; i < array->cDims; ++i) {
        m_count *= array->rgsabound[i].cElements;
    }
}

ArrayAccess::~ArrayAccess() {
    if (m_array) {
        SafeArrayUnaccessData(m_array);
    }
}

} // namespace kinora::programs
