/* The user's side of the type "integer" for the C of the examples: the
   type, its copy, and the operators the examples' tests and sums use. zero_integer,
   the methods and the constants without a C value are defined in
   <module>_user.c. */
#ifndef C_DATA_USER_INTEGER_H
#define C_DATA_USER_INTEGER_H

typedef int integer;
#define copy_integer(x) (x)
/* A value assigned through a binding is copied with the copy function of
   the bound signal's type, which is "pure" when that signal is pure. */
#define copy_pure(x) (x)
#define sup_integer(a, b) ((a) > (b))
#define add_integer(a, b) ((a) + (b))

#endif
