"""Field files and meshes come back as arrays; failures are OSError with the library's text."""
import numpy as np
import pytest
import velk

MESH = "4 2\nnodes\n0 0 1 0\n1 0 1 0\n1 1 0 1\n0 1 0 1\ncells\n1 2 3\n1 3 4\n"


def test_vector_and_scalar_files(tmp_path):
    (tmp_path / "f.vec").write_text("VELK VECTOR ASCII\n3 2\n" + "".join(
        f"{i} {-i}\n" for i in range(6)))
    u, v = velk.read_vector_field(tmp_path / "f.vec")
    assert u.dtype == np.float32 and u.tolist() == [[0, 1, 2], [3, 4, 5]] and (v == -u).all()
    big_endian = np.arange(6, dtype=">f4").tobytes()
    (tmp_path / "s.sca").write_bytes(b"VELK SCALAR BINARY\n2 3\n" + big_endian)
    assert velk.read_scalar_field(tmp_path / "s.sca").tolist() == [[0, 1], [2, 3], [4, 5]]


def test_ucd_meshes(tmp_path):
    (tmp_path / "m.inp").write_text(MESH)
    u, v = velk.read_ucd(tmp_path / "m.inp", grid=(8, 4))
    assert u.shape == (4, 8) and u[:, :2].max() == 0 and u[0, 4] > 0.5
    u2, _ = velk.read_ucd(tmp_path / "m.inp", grid=(8, 4), bbox=(0, 2, 0, 1))
    assert u2[:, 4:].max() == 0
    (tmp_path / "s.inp").write_text("3 1\n\n0 0 1\n1 0 2\n0 1 3\n\n1 2 3\n")
    assert velk.read_scalar_ucd(tmp_path / "s.inp", grid=(4, 4)).shape == (4, 4)


@pytest.mark.parametrize("name,text,error,message", [
    ("missing.vec", None, FileNotFoundError, "can't open .*missing.vec"),
    ("bad.vec", "VELK SCALAR\n2 2\n", OSError, "header string 'VELK VECTOR' not found"),
    ("small.vec", "VELK VECTOR\n1 2\n", OSError, "illegal vector field dimensions"),
    ("bad.inp", "2 0\n", OSError, "insufficient data"),
])
def test_unreadable_files(tmp_path, capfd, name, text, error, message):
    if text is not None:
        (tmp_path / name).write_text(text)
    read = velk.read_ucd if name.endswith("inp") else velk.read_vector_field
    with pytest.raises(error, match=message):
        read(tmp_path / name, grid=(4, 4)) if name.endswith("inp") else read(tmp_path / name)
    assert capfd.readouterr() == ("", "")


def test_pnm_round_trip_and_errors(tmp_path, capfd):
    img = velk.noise((5, 7, 3), seed=2)
    velk.write_pnm(tmp_path / "a.ppm", img)
    assert np.array_equal(velk.read_pnm(tmp_path / "a.ppm"), img)
    with pytest.raises(FileNotFoundError):
        velk.write_pnm(tmp_path / "no" / "a.pgm", img[..., 0])
    assert capfd.readouterr() == ("", "")
