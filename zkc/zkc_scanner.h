#ifndef TARN_ZKC_ZKC_SCANNER_H
#define TARN_ZKC_ZKC_SCANNER_H

// The class zkcFlexLexer of the .zkc scanner. FlexLexer.h declares its class
// under the name yyFlexLexer stands for, so the name is set around it.

#undef yyFlexLexer
#define yyFlexLexer zkcFlexLexer
#include <FlexLexer.h>
#undef yyFlexLexer

#endif
