/// The version of the login manager that the library refers to. The build takes it from here.
static class ManagerVersion
{
    public const string Text = "34.0.0.5070";
}
