#ifndef TARN_SOURCE_ZK_SCANNER_H
#define TARN_SOURCE_ZK_SCANNER_H

// The class zkFlexLexer of the ZK source scanner. FlexLexer.h declares its
// class under the name yyFlexLexer stands for, so the name is set around it.

#undef yyFlexLexer
#define yyFlexLexer zkFlexLexer
#include <FlexLexer.h>
#undef yyFlexLexer

#endif
