#ifndef C_DATA_USER_INTEGER_H
#define C_DATA_USER_INTEGER_H
typedef int integer;
#define copy_integer(x) (x)
#define add_integer(a, b) ((a) + (b))
#define sup_integer(a, b) ((a) > (b))
#endif
