struct Native {
    int size() const;
};
__attribute__((visibility("default"))) int Native::size() const
{
    return 1;
}
