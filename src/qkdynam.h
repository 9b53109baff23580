// qkdynam: the whole public interface in one include.
#pragma once

#include "qkdynam_platform.h"

#include "zo/kel/DLLMalloc.h"
#include "zo/kel/Exception.h"
#include "zo/kel/NumericCast.h"
#include "zo/kel/SafeInteger.h"
#include "zo/kel/SourceSite.h"
#include "zo/kel/StringBase.h"
#include "zo/kel/Utf8.h"
#include "zo/kel/osdep/Assertion.h"
#include "zo/kel/osdep/AtomicInt.h"
#include "zo/kel/osdep/CharacterAttributes.h"
#include "zo/kel/osdep/CharsetConversion.h"
#include "zo/kel/osdep/CriticalSection.h"
#include "zo/kel/osdep/Event.h"
#include "zo/kel/osdep/IntegerToString.h"
#include "zo/kel/osdep/Thread.h"
#include "zo/kel/osdep/OSException.h"
#include "zo/kel/osdep/SerializeUtf16.h"
#include "zo/kel/osdep/StringCompare.h"
