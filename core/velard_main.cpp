int ImsMain();

int main() { return ImsMain(); }
