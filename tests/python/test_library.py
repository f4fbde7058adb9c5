"""Where the library is looked for, and what may not be one."""

import pytest
from kinora_veltrix import Coupling, LibraryNotFound, _native, version


@pytest.fixture
def tree(monkeypatch, tmp_path):
    """A source tree in which the package lies, with nothing built yet."""
    monkeypatch.delenv("KINORA_VELTRIX_LIBRARY", raising=False)
    package = tmp_path / "bindings" / "python" / "kinora_veltrix"
    (package / "_library").mkdir(parents=True)
    (tmp_path / "build" / "native-release" / "bin").mkdir(parents=True)
    (tmp_path / "capi").mkdir()
    (tmp_path / "capi" / "kinora_veltrix.h").touch()
    monkeypatch.setattr(_native, "__file__", str(package / "_native.py"))
    return tmp_path


def test_the_variable_comes_before_the_package_and_that_before_the_source_tree(tree, monkeypatch):
    places = [
        tree / "build" / "native-release" / "bin" / "libkinora_veltrix.so",
        tree / "bindings" / "python" / "kinora_veltrix" / "_library" / "libkinora_veltrix.so",
        tree / "named.so",
    ]
    with pytest.raises(LibraryNotFound, match=f'looked for "{places[1]}", "{places[0]}"'):
        _native.find()
    for place in places:
        place.touch()
        if place.name == "named.so":
            monkeypatch.setenv("KINORA_VELTRIX_LIBRARY", str(place))
        assert _native.find() == place


def test_a_coupling_may_name_its_own():
    library = _native.find()
    assert version(library) == version()
    with Coupling(library=str(library)) as coupling:
        coupling.release()


def test_a_library_that_is_not_where_the_variable_says(monkeypatch, tmp_path):
    monkeypatch.setenv("KINORA_VELTRIX_LIBRARY", str(tmp_path / "absent.so"))
    with pytest.raises(LibraryNotFound) as caught:
        Coupling()
    assert isinstance(caught.value, OSError)
    assert f'that KINORA_VELTRIX_LIBRARY names is not there; looked for "{tmp_path}/absent.so".' in str(caught.value)


def test_a_file_that_is_no_library(tmp_path):
    (tmp_path / "text.so").write_text("text")
    with pytest.raises(LibraryNotFound, match='text.so" is no library that this package can use: '):
        Coupling(library=tmp_path / "text.so")


def test_another_library_that_lacks_the_functions():
    with pytest.raises(LibraryNotFound, match="is no library that this package can use: .*kv_version"):
        Coupling(library=next(place for place in libraries_in_use() if "libc." in place))


def test_a_library_that_is_older_than_the_package(monkeypatch):
    monkeypatch.setattr(_native, "API_VERSION", 2)
    with pytest.raises(LibraryNotFound, match="knows the interface up to 1 only; this package needs 2: "):
        _native.Library(str(_native.find()))


def libraries_in_use():
    with open("/proc/self/maps") as maps:
        return [line.split()[-1] for line in maps]
