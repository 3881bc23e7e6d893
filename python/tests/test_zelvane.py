"""The package: each class on the fixtures of the C++ tests and a copy of their demo-root."""
import copy
import datetime
import os
import pathlib
import resource
import shutil
import subprocess
import sys
import threading
import tracemalloc

import pytest

import zelvane

FIXTURES = pathlib.Path(__file__).parents[2] / "tests" / "fixtures"
NIGHT = datetime.datetime(2026, 3, 7, 22, 30)


@pytest.fixture
def root(tmp_path, monkeypatch):
    """An installation named by a file in place of /etc/zelvane.conf."""
    shutil.copytree(FIXTURES / "demo-root", tmp_path / "root")
    (tmp_path / "zelvane.conf").write_text(f"[ZELVANE]\nPATH = {tmp_path}/root\nVERSION = 4.2\nZELSRV = 1\n")
    monkeypatch.setenv("ZELVANE_TEST_SETTINGS", str(tmp_path / "zelvane.conf"))
    monkeypatch.setenv("HOME", str(tmp_path / "root" / "home"))
    return tmp_path / "root"


def test_config(root):
    path = root / "upscli.cfg"
    before = path.read_bytes()
    with zelvane.Config(path, cached=True) as config, config:
        assert list(config)[:3] == ["CLILIST", "CLOSEANDSAVEAPP", "INVENTÁRIO"]
        assert config["POPUP"]["shutmessage"] == "Atenção: %c será desligado em %r s. (%m)"
        assert config.get_int("CloseAndSaveApp", "TimeLimit") == 90
        assert config.get_int("POPUP", "SHUTMESSAGE", 7) == config.get_int("NONE", "NONE", 7) == 7
        assert config.get_bool("SHUTSRV", "MAILSEND") is config.get_bool("SHUTSRV", "NONE", True) is True
        config["RUNCOMMAND"]["DELAY"] = "30"
        config["NEW"] = {"HALF": "0.5", "LOST": ""}
        config["NEW"] = {"HALF": "0.5"}
        config["NEW"].set_datetime("WHEN", NIGHT)
        assert path.read_bytes() == before
        config.save()
        assert (config["NEW"].get_float("HALF"), config["NEW"].get_datetime("WHEN")) == (0.5, NIGHT)
        del config["NEW"]["HALF"]
    after = before.replace(b"DELAY = 5\n", b"DELAY = 30\n") + b"\n[NEW]\nWHEN = 07/03/2026 22:30:00"
    assert path.read_bytes() == after
    direct = zelvane.Config(path)
    direct["NEW"] = {"A": "1"}
    assert path.read_bytes() == after.replace(b"WHEN = 07/03/2026 22:30:00", b"A = 1")
    direct.clear()
    assert (list(direct), path.read_bytes() != after) == ([], True)


def test_config_with_a_bad_line(tmp_path):
    (tmp_path / "bad.cfg").write_text("[A]\nB = 1\n[\nC = 2\n")
    with pytest.raises(zelvane.ConfigError, match="bad.cfg:3: ") as raised:
        zelvane.Config(tmp_path / "bad.cfg")
    assert (raised.value.code, raised.value.line, raised.value.path) == (7, 3, str(tmp_path / "bad.cfg"))
    lenient = zelvane.Config(tmp_path / "bad.cfg", read_only=True, strict=False)
    assert (lenient.error_line, dict(lenient["A"])) == (3, {"B": "1"})
    with pytest.raises(zelvane.ConfigError, match="reading only"):
        lenient["A"]["B"] = "2"


ERRORS = {
    'config["SHUTSRV"]["NONE"]': KeyError,
    'config["NONE"]': KeyError,
    'config["POPUP"].pop("NONE")': KeyError,
    'config["POPUP"].update(TEXT="10 €")': UnicodeEncodeError,
    'config["POPUP"].update(TEXT="a]")': ValueError,
    'config["POPUP"].update(TEXT="a\\nb")': ValueError,
    'config["POPUP"].update(TEXT="a\\0b")': ValueError,
    'config["POPUP"].update({"a=b": "c"})': ValueError,
    'config["POPUP"].update({" A": "b"})': ValueError,
    'config.section(" ").update(A="b")': ValueError,
    'config.update(POPUP={"A": "b", "B": 5})': TypeError,
    'config["POPUP"].update(TEXT=None)': TypeError,
    'config["POPUP"].set_datetime("WHEN", NIGHT.replace(tzinfo=datetime.timezone.utc))': ValueError,
    'config["POPUP"].set_datetime("WHEN", NIGHT.replace(year=2039))': ValueError,
    "config.close() or list(config)": zelvane.ConfigError,
    'zelvane.Config(root / "none.cfg")': FileNotFoundError,
    'zelvane.Config("")': FileNotFoundError,
    "zelvane.Config(root)": IsADirectoryError,
    'setattr(zelvane.shutdown_settings(root), "server_address", "1234567890123456")': ValueError,
    'setattr(zelvane.client_settings(), "server_name", "a;b")': ValueError,
    'zelvane.Server("a;b", "10.0.0.9")': ValueError,
    'zelvane.ShutdownSettings.defaults(root / "none").save()': FileNotFoundError,
    'setattr(settings, "ups_type", 4) or settings.save()': zelvane.Error,  # of fewer than five fields
    "zelvane.add_server(zelvane.servers()[0])": zelvane.Error,
    'zelvane.add_unit("100")': zelvane.Error,
    "zelvane.BrowseList(root)": IsADirectoryError,
    'zelvane.BrowseList(root / "none.cfg").add_group("a;b")': ValueError,
    'zelvane.BrowseList(root / "none.cfg").edit(zelvane.Group(1 << 32, "a"))': TypeError,
    "log[74]": IndexError,
    "log[1 << 80]": IndexError,
    "zelvane.EventLog.verify(None)": TypeError,
    'log.append(300, "x" * 63)': ValueError,
    "log.append(65536)": ValueError,
    'zelvane.EventLog(root / "logevt.rgt", limit=0)': ValueError,
    'zelvane.EventLog(root / "none.rgt")': FileNotFoundError,
    "zelvane.EventLog(root)": IsADirectoryError,
    "zelvane.Schedule(root)": IsADirectoryError,
    'zelvane.LanguageFile(root / "none.cfg", 1)[13]': KeyError,
    "zelvane.LanguageFile(root, 1)": IsADirectoryError,
    "iter(zelvane.Language(1))": TypeError,
    'zelvane.Service("no such service")': KeyError,
    'zelvane.Cipher("x").decrypt_file(root / "none", root / "out")': FileNotFoundError,
    'zelvane.Cipher("x").encrypt_file(root / "upscli.cfg", root / "none" / "out")': FileNotFoundError,
    'zelvane.Cipher("x").encrypt_file(root / "upscli.cfg", root / "upscli.cfg")': zelvane.Error,
}


def files(root):
    return {path: path.read_bytes() for path in root.rglob("*") if path.is_file()}


@pytest.mark.parametrize("call", ERRORS)
def test_errors_change_nothing(root, call):
    objects = {"root": root, "config": zelvane.Config(root / "upscli.cfg"), "log": zelvane.EventLog(root / "logevt.rgt")}
    objects["settings"] = zelvane.ups_settings(root)
    before = files(root)
    with pytest.raises(ERRORS[call]):
        eval(call, globals(), objects)
    assert files(root) == before


def test_settings(root):
    shutdown = zelvane.shutdown_settings(root)
    assert (shutdown.server_name, shutdown.server_port, shutdown.system_shutdown) == ("nobreak-01", 4375, True)
    assert shutdown.mail_password == "segredo" and "segredo" not in repr(shutdown)
    with pytest.raises(ValueError, match="^mail_password: 21 characters are too many, at most 20$"):
        shutdown.mail_password = "é" * 21
    before = copy.copy(shutdown)
    shutdown.popup, shutdown.cmd_line = True, "/bin/sync"
    shutdown.save()
    assert zelvane.shutdown_settings() == shutdown != before
    ups = zelvane.ups_settings(root)
    assert (ups.timer_on_battery, ups.comm_port, ups.full_discharge_date) == (300000, 1, None)
    ups.full_discharge_date, ups.tcp_port = NIGHT, 4376
    ups.save()
    assert zelvane.ups_settings(root) == ups
    client = zelvane.client_settings()
    client.lang_id = 2
    client.save()
    assert zelvane.client_settings().as_dict()["lang_id"] == 2
    assert (zelvane.installation().version, zelvane.installation().programs) == ("4.2", ["zelsrv"])
    zelvane.set_root(root / "other")
    assert zelvane.root() == f"{root}/other/"
    zelvane.set_root()
    assert zelvane.root() == f"{root}/"


def test_lists(root):
    before = zelvane.servers()
    zelvane.add_server(zelvane.Server("cellar", "10.0.0.9", key=77))
    assert (zelvane.servers()[:-1], zelvane.servers()[-1].key) == (before, 77)
    zelvane.remove_server(zelvane.servers()[-1])
    assert zelvane.servers() == before
    zelvane.clear_servers()
    assert zelvane.servers() == []
    zelvane.remove_unit("12")
    assert zelvane.units() == ["007"]
    assert [(kind.number, kind.model_index) for kind in zelvane.ups_types()] == [(0, -1), (10, 12), (3, 3)]
    assert (zelvane.model_name(-1), zelvane.model_name(88)) == ("AUTO", None)


def test_browse_list(tmp_path):
    path = tmp_path / "zelbrws.cfg"
    with zelvane.BrowseList(path) as network:
        site = network.add_group("Sítio")
        tower = network.add_computer("tower", "10.0.0.7", network.add_group("Rack", site))
        network.add_unit("UPS", 5, tower)
        tower.address = "10.0.0.8"
        network.edit(tower)
    path.write_bytes(path.read_bytes().replace(b"1 = Rack;0\n", b"1 = Rack;0\n7 = x;8\n8 = y;7\n"))
    network = zelvane.BrowseList(path)
    assert [[group.name for group in top.walk()] for top in network.groups] == [["Sítio", "Rack"], ["x", "y"]]
    (tower,) = network.groups[0].groups[0].computers
    assert (tower.address, tower.units[0].number, tower.group.parent.name) == ("10.0.0.8", 5, "Sítio")
    network.remove(network.groups[0])
    assert b"tower" not in path.read_bytes() and network.changed is not None
    os.mkfifo(tmp_path / "fifo")
    assert zelvane.BrowseList(tmp_path / "fifo").groups == []


def test_event_log(root):
    path = root / "logevt.rgt"
    log = zelvane.EventLog(path)
    assert (len(log), len(log[-3:]), log[-1], sum(1 for _ in log)) == (74, 3, log[73], 74)
    assert (log[4].time, log[4].code) == (datetime.datetime(2005, 3, 4, 14, 7, 7), 3)
    assert (log[4].text, len(log[4].payload)) == ("Battery low, 10.8 V, 28 °C", 62)
    assert (log.count(1), log.count(1, last=datetime.date(2005, 3, 3)), log.count(1, NIGHT)) == (24, 0, 0)
    assert log.duration(1, [2]) == datetime.timedelta(seconds=8214)
    assert (memoryview(log.records).itemsize, bytes(memoryview(log.records))) == (68, path.read_bytes())
    assert (log.count(40000), log.duration(40000, [40001])) == (0, datetime.timedelta(0))
    log.append(300, "fim é agora", NIGHT)
    log.append(301, b"\1\2", NIGHT - datetime.timedelta(seconds=1))
    assert (len(log), log[74].text, log[75].payload[:3]) == (76, "fim é agora", b"\1\2\0")
    assert log.verify()["out_of_order"] == [75]
    zelvane.EventLog(path, limit=2).append(302)
    assert [event.code for event in zelvane.EventLog(path)] == [301, 302]
    damaged = os.fsencode(root) + b"/\xff.rgt"
    pathlib.Path(os.fsdecode(damaged)).write_bytes(bytes(69))
    with pytest.warns(RuntimeWarning, match="damaged"):
        assert zelvane.EventLog(damaged).verify()["torn_bytes"] == 1


def test_text_log_schedule_and_language(root, tmp_path):
    zelvane.TextLog(tmp_path / "log.txt").write("Olá", NIGHT)
    begin, *_, end = (tmp_path / "log.txt").read_bytes().rsplit(b" ", 2)
    assert (begin, end) == (b"07/03/2026 22:30:00", b"Ol\xe1\n")
    moments = [datetime.datetime(2037, 5, 1, 8), datetime.datetime(2037, 1, 1)]
    for moment in moments:
        zelvane.Schedule(tmp_path / "schedule").add(moment)
    schedule = zelvane.Schedule(tmp_path / "schedule")
    assert list(schedule) == schedule[:] == sorted(moments)
    schedule.remove(datetime.date(2037, 1, 1))
    assert (len(schedule), schedule.next(), schedule[-1]) == (1, moments[0], moments[0])
    (root / "zellang.cfg").write_bytes(b"[LANG]\n1 = Portugu\xeas\n[1]\n12 = Liga\xe7\xe3o\n")
    lang = zelvane.Language(1)
    lang[12] = "minha"
    assert (lang[12], lang.installed(12), lang.name(1), lang.count()) == ("minha", "Ligação", "Português", 1)
    assert (12 in lang, 13 in lang) == (True, False)
    assert zelvane.LanguageFile(root / "home" / ".zellang.cfg", 1)[12] == "minha"


def test_system():
    child = subprocess.Popen(["sleep", "60"])
    (process,) = [process for process in zelvane.processes() if process.pid == child.pid]
    assert (process.name, process.command, process.ppid) == ("sleep", "sleep 60", os.getpid())
    process.kill()
    assert child.wait() == -15
    for service in zelvane.services()[:1]:
        assert zelvane.Service(service.name).path == service.path


def test_crypto(tmp_path):
    for line in (FIXTURES / "ripemd256.txt").read_text().splitlines():
        if line[0] != "#":
            _, message, digest = line.split()
            data = bytes.fromhex(message.replace("-", ""))
            ripe = zelvane.RipeMD256(data[:5])
            ripe.copy().update(b"else")
            ripe.update(memoryview(data)[5:])
            assert ripe.hexdigest() == digest, line
    assert (zelvane.b64decode(zelvane.b64encode(b"\0\xff" * 60)), zelvane.b64encode(b"")) == (b"\0\xff" * 60, b"")
    assert zelvane.decode_password(zelvane.encode_password("é")) == "é" != zelvane.decode_password("c2VncmVkbwA=")
    (tmp_path / "plain").write_bytes(b"twice the same")
    cipher = zelvane.Cipher("frase é secreta")
    cipher.encrypt_file(tmp_path / "plain", tmp_path / "old")
    assert cipher.encrypt(b"twice the same") == (tmp_path / "old").read_bytes() != b"twice the same"
    assert zelvane.Cipher("frase é secreta").decrypt((tmp_path / "old").read_bytes()) == b"twice the same"


def test_threads_share_an_object(root):
    section = zelvane.Config(root / "upscli.cfg", cached=True).section("T")
    work = [threading.Thread(target=section.update, args=({f"K{n}_{i}": "1" for i in range(300)},)) for n in range(4)]
    [thread.start() for thread in work]
    [thread.join() for thread in work]
    assert len(section) == 1200


def test_memory(root):
    (root / "big.rgt").write_bytes((root / "logevt.rgt").read_bytes() * 20)

    def work():
        log = zelvane.EventLog(root / "big.rgt")
        memoryview(log.records), log.verify(), log[-1].text, list(zelvane.BrowseList(root / "none.cfg").groups)
        config = zelvane.Config(root / "upscli.cfg")
        pytest.raises(KeyError, lambda: config["NONE"])
        pytest.raises(UnicodeEncodeError, config.section("A").update, {"B": "€"})
        zelvane.shutdown_settings(root), zelvane.Cipher("x").encrypt(b"y" * 9000)

    [work() for _ in range(50)]
    tracemalloc.start()
    most, before = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss, tracemalloc.get_traced_memory()[0]
    [work() for _ in range(300)]
    assert tracemalloc.get_traced_memory()[0] - before < 50_000
    # KiB. Either copy of the log would take 30,000 if it stayed.
    assert resource.getrusage(resource.RUSAGE_SELF).ru_maxrss - most < 8_000
    tracemalloc.stop()


def test_types(tmp_path):
    package = pathlib.Path(zelvane.__file__).parent
    mypy = [sys.executable, "-m", "mypy", "--strict", f"--cache-dir={tmp_path}", str(package)]
    assert subprocess.run(mypy, capture_output=True, text=True).stdout == "Success: no issues found in 5 source files\n"
    check = [sys.executable, "-m", "mypy.stubtest", "zelvane._zelvane", "--concise"]
    told = subprocess.run(check, capture_output=True, text=True, cwd=package.parent, env={**os.environ, "MYPYPATH": "."})
    assert [line for line in told.stdout.splitlines() if "not present" in line or "error" in line] == []
    assert [name for name in zelvane.__all__ if not getattr(zelvane, name).__doc__] == []
