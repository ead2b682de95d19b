"""Arranges the files of the NuGet package."""
import shutil

content_types = """<?xml version="1.0" encoding="utf-8"?>
<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">
<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>
%s
</Types>
"""
relationships = """<?xml version="1.0" encoding="utf-8"?>
<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">
<Relationship Type="http://schemas.microsoft.com/packaging/2010/07/manifest" Target="/Orvel.Login.nuspec" Id="R0"/>
</Relationships>
"""


def stage(package, staged, templates, version):
    """Makes the folder `staged` from the unpacked ZIP `package` and the folder `templates`."""
    shutil.copytree(templates, staged)
    native = staged / "build" / "native"
    architectures = sorted(folder.name for folder in (package / "bin").iterdir())
    for architecture in architectures:
        for name in ("bin/%s/orvelloginc.dll", "bin/%s/OrvelLoginClientCLR.dll", "lib/%s/orvelloginc.lib"):
            file = name % architecture
            (native / file).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(package / file, native / file)
    for folder, to in (("include", native), ("notices", staged)):
        shutil.copytree(package / folder, to / folder)
    for name in ("LICENSE", "NOTICES.md", "CHANGELOG.md", "SECURITY.md"):
        shutil.copy(package / name, staged)
    shutil.copy(package / "bindings" / "csharp" / "OrvelLogin.cs", staged / "build" / "net40")

    for path in (staged / "Orvel.Login.nuspec", *staged.glob("build/*/*.targets")):
        platforms = " and ".join(architectures)
        if path.parent == native:
            platforms = platforms.replace("x86", "Win32")
        text = path.read_text("utf-8").replace("@version@", version).replace("@platforms@", platforms)
        path.write_text(text, "utf-8")
    # Open Packaging Conventions: a type for each extension, and for each file without one.
    files = [path.relative_to(staged) for path in staged.rglob("*") if path.is_file()]
    types = {'<Default Extension="%s" ContentType="application/octet"/>' % path.suffix[1:] for path in files if path.suffix}
    types |= {'<Override PartName="/%s" ContentType="application/octet"/>' % path for path in files if not path.suffix}
    (staged / "[Content_Types].xml").write_text(content_types % "\n".join(sorted(types)), "utf-8")
    (staged / "_rels").mkdir()
    (staged / "_rels" / ".rels").write_text(relationships, "utf-8")
