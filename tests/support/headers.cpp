// Only the headers matter: they are precompiled for all tests.
int main()
{
    return 0;
}
