#include "tavlo/qkdynamic/PayloadFactories.h"

#include "tavlo/qkdynamic/CellGuts.h"
#include "tavlo/qkdynamic/RawGuts.h"
#include "tavlo/qkdynamic/VectorGuts.h"

IVarDataGuts* NewRawGuts(const unsigned char* data, unsigned int size) { return new RawGuts(data, size); }

IVarDataGuts* NewCellGuts(unsigned short row, unsigned short column, const VarData* value) {
    return new CellGuts(row, column, *value);
}

IVarDataGuts* NewVectorGuts() { return new VectorGuts(); }
