// What the start of a program costs that does nothing.
int main() {
    return 0;
}
