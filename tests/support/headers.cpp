// Only its headers count: they are compiled once for all tests.
int main()
{
    return 0;
}
