// Nothing of its own: a place for the headers that come before it.
int main() {}
