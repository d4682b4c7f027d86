// Only here to be compiled with the headers that all tests share.
