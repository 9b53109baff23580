// qkdynam: the whole public interface in one include.
//
// Public headers are exactly those included below, plus this one and
// qkdynam_platform.h; every other header under src/ is internal: never
// installed, never included by a public header (configure fails if one is).
// Internal code that must live in a header sits in a namespace named
// `internal` nested in its unit's namespace (zo::kel::internal,
// zo::kel::osdep::internal, ::internal for the value layer, which has no
// namespace of its own); internal code in a .cpp sits in an anonymous
// namespace. Only the public API is exported (QKDYNAM_API); tests reach the
// rest through the library's static build.
#pragma once

#include "qkdynam_platform.h"

#include "tavlo/qkstatic/DisplayFormats.h"
#include "tavlo/qkstatic/NumberToText.h"
#include "tavlo/qkstatic/SerialDate.h"
#include "tavlo/qkstatic/TextToValue.h"
#include "tavlo/qkstatic/TimeEncodings.h"
#include "zo/kel/AbsTime.h"
#include "zo/kel/AutoBuffer.h"
#include "zo/kel/BufferWrapper.h"
#include "zo/kel/ByteForm.h"
#include "zo/kel/DLLMalloc.h"
#include "zo/kel/Exception.h"
#include "zo/kel/FixedPoint128.h"
#include "zo/kel/FlexData.h"
#include "zo/kel/FlexType.h"
#include "zo/kel/NumericCast.h"
#include "zo/kel/RelTime.h"
#include "zo/kel/SafeInteger.h"
#include "zo/kel/SourceSite.h"
#include "zo/kel/StringBase.h"
#include "zo/kel/Utf8.h"
#include "zo/kel/Vector.h"
#include "zo/kel/Waveform.h"
#include "zo/kel/fd.h"
#include "zo/kel/osdep/AbsTimeToString.h"
#include "zo/kel/osdep/Assertion.h"
#include "zo/kel/osdep/AtomicInt.h"
#include "zo/kel/osdep/CharacterAttributes.h"
#include "zo/kel/osdep/CharsetConversion.h"
#include "zo/kel/osdep/CriticalSection.h"
#include "zo/kel/osdep/Event.h"
#include "zo/kel/osdep/IntegerToString.h"
#include "zo/kel/osdep/Thread.h"
#include "zo/kel/osdep/INIFileManager.h"
#include "zo/kel/osdep/OSException.h"
#include "zo/kel/osdep/SerializeUtf16.h"
#include "zo/kel/osdep/StringCompare.h"
#include "zo/kel/osdep/SystemClock.h"
#include "zoini/zoini.h"

#include "tavlo/qkdynamic/PayloadFactories.h"
#include "tavlo/qkstatic/ComInterfaces.h"
#include "tavlo/qkstatic/GXVariantToVarData.h"
#include "tavlo/qkstatic/VarDataExceptions.h"
#include "tavlo/qkstatic/VarDataGuts.h"
#include "tavlo/qkstatic/VarDataToGXVariant.h"
#include "tavlo/qkstatic/VarDataType.h"
#include "tavlo/qkstatic/vardata.h"
