#include "zo/kel/Vector.h"

namespace zo::kel {

template class Vector<unsigned char>;
template class Vector<unsigned short>;
template class Vector<unsigned int>;
template class Vector<double>;
template class Vector<BufferWrapper>;
template class Vector<NarrowString>;
template class Vector<WideString>;

}  // namespace zo::kel
