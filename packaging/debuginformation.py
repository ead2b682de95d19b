"""The debug information of an image, in a file of its own."""
import shutil
import subprocess


def split(objcopy, image, folder):
    """Copies an image that has debug information to the folder, then strips it and makes it name the copy."""
    if b".debug_info" not in image.read_bytes():
        return
    information = folder / (image.name + ".debug")
    shutil.copyfile(image, information)
    # Without --preserve-dates, objcopy writes the current time into the image.
    subprocess.run([objcopy, "--preserve-dates", "--strip-unneeded", image], check=True)
    subprocess.run([objcopy, "--preserve-dates", "--add-gnu-debuglink=" + information.name, image.resolve()],
                   cwd=folder, check=True)
