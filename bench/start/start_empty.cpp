// A program that does nothing: what any start costs on this machine.
int main() {
    return 0;
}
