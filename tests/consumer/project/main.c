/* A host in C. Prints the DLL's version. */
#include <marvo_c.h>
#include <stdio.h>

int main(void) {
    puts(marvo_version_text());
    return 0;
}
