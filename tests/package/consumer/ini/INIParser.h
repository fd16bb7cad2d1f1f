#error "the library includes a header of the program"
