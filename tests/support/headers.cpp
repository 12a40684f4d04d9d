// This file exists only to precompile the headers of all tests.
int main()
{
    return 0;
}
