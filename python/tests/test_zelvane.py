"""The package: each class on the fixtures of the C++ tests and a copy of their demo-root."""
import copy
import datetime
import os
import pathlib
import re
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
    before = (path := root / "upscli.cfg").read_bytes()
    with zelvane.Config(path, cached=True) as config, config:
        assert list(config)[:3] == ["CLILIST", "CLOSEANDSAVEAPP", "INVENTÁRIO"]
        assert config["POPUP"]["shutmessage"] == "Atenção: %c será desligado em %r s. (%m)"
        numbers = [("CloseAndSaveApp", "TimeLimit"), ("POPUP", "SHUTMESSAGE"), ("NONE", "NONE")]
        assert [config.get_int(section, key, 7) for section, key in numbers] == [90, 7, 7]
        assert config.get_bool("SHUTSRV", "MAILSEND") is config.get_bool("SHUTSRV", "NONE", True) is True
        config["RUNCOMMAND"]["DELAY"] = "30"
        config["NEW"] = {"LOST": ""}
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
    assert (direct.clear(), list(direct)) == (None, [])


def test_config_with_a_bad_line(tmp_path):
    (tmp_path / "bad.cfg").write_text("[A]\nB = 1\n[\nC = 2\n")
    error = pytest.raises(zelvane.ConfigError, zelvane.Config, tmp_path / "bad.cfg").value
    assert (error.code, error.line, str(error).partition(" ")[0]) == (7, 3, f"{error.path}:3:")
    lenient = zelvane.Config(tmp_path / "bad.cfg", read_only=True, strict=False)
    assert (lenient.error_line, dict(lenient["A"])) == (3, {"B": "1"})
    assert pytest.raises(zelvane.ConfigError, lenient["A"].update, B="2").value.code == 6


ERRORS = {
    KeyError: ['config["SHUTSRV"]["NONE"]', 'config["NONE"]', 'popup.pop("NONE")',
        'LanguageFile(root / "none.cfg", 1)[13]', 'Service("no such service")'],
    UnicodeEncodeError: ['popup.update(TEXT="10 €")'],
    ValueError: ['popup.update(TEXT="a]")', 'popup.update(TEXT="a\\nb")', 'popup.update(TEXT="a\\0b")',
        'popup.update({"a=b": "c"})', 'popup.update({" A": "b"})', 'config.section(" ").update(A="b")',
        'popup.set_datetime("WHEN", NIGHT.replace(tzinfo=datetime.timezone.utc))',
        'popup.set_datetime("WHEN", NIGHT.replace(year=2039))',
        'setattr(shutdown_settings(root), "server_address", "1234567890123456")',
        'setattr(client_settings(), "server_name", "a;b")', 'Server("a;b", "10.0.0.9")',
        'BrowseList(root / "none.cfg").add_group("a;b")', 'log.append(300, "x" * 63)', "log.append(65536)",
        'EventLog(root / "logevt.rgt", limit=0)'],
    TypeError: ['config.update(POPUP={"A": "b", "B": 5})', "popup.update(TEXT=None)",
        'BrowseList(root / "none.cfg").edit(Group(1 << 32, "a"))', "EventLog.verify(None)", "iter(Language(1))",
        "copy.copy(log)", "copy.copy(config)", 'copy.copy(BrowseList(root / "none.cfg"))'],
    zelvane.ConfigError: ["config.close() or list(config)"],
    FileNotFoundError: ['Config(root / "none.cfg")', 'Config("")', 'ShutdownSettings.defaults(root / "none").save()',
        'EventLog(root / "none.rgt")', 'Cipher("x").decrypt_file(root / "none", root / "out")',
        'Cipher("x").encrypt_file(path, root / "none" / "out")'],
    IsADirectoryError: ["Config(root)", "BrowseList(root)", "EventLog(root)", "Schedule(root)",
        "LanguageFile(root, 1)"],
    zelvane.Error: ['setattr(settings, "ups_type", 4) or settings.save()', "add_server(servers()[0])",
        'add_unit("100")', 'Cipher("x").encrypt_file(path, path)'],
    IndexError: ["log[74]", "log[1 << 80]"],
}


def files(root):
    return {path: path.read_bytes() for path in root.rglob("*") if path.is_file()}


@pytest.mark.parametrize("call, error", [(call, error) for error, calls in ERRORS.items() for call in calls])
def test_errors_change_nothing(root, call, error):
    path, log, settings = root / "upscli.cfg", zelvane.EventLog(root / "logevt.rgt"), zelvane.ups_settings()
    config, before = zelvane.Config(path), files(root)
    objects = {**vars(zelvane), **globals(), **locals(), "popup": config["POPUP"]}
    pytest.raises(error, eval, call, objects)
    assert files(root) == before


def test_settings(root):
    shutdown = zelvane.shutdown_settings(root)
    assert (shutdown.server_name, shutdown.server_port, shutdown.system_shutdown) == ("nobreak-01", 4375, True)
    assert shutdown.mail_password == "segredo" and "segredo" not in repr(shutdown)
    raised, before = pytest.raises(ValueError, setattr, shutdown, "mail_password", "é" * 21), shutdown.__copy__()
    assert str(raised.value) == "mail_password: 21 characters are too many, at most 20"
    shutdown.popup = True
    shutdown.save()
    assert zelvane.shutdown_settings() == shutdown != before
    ups, client = zelvane.ups_settings(root), zelvane.client_settings()
    assert (ups.timer_on_battery, ups.comm_port, ups.full_discharge_date) == (300000, 1, None)
    ups.full_discharge_date, ups.tcp_port, client.lang_id = NIGHT, 4376, 2
    ups.save(), client.save()
    assert (zelvane.ups_settings(root), zelvane.client_settings().as_dict()["lang_id"]) == (ups, 2)
    assert (zelvane.installation().version, zelvane.installation().programs) == ("4.2", ["zelsrv"])
    assert [zelvane.set_root(folder) or zelvane.root() for folder in ("/other", None)] == ["/other/", f"{root}/"]


def test_lists(root):
    before = zelvane.servers()
    zelvane.add_server(zelvane.Server("cellar", "10.0.0.9", key=77))
    assert (zelvane.servers()[:-1], zelvane.servers()[-1].key) == (before, 77)
    assert (zelvane.remove_server(zelvane.servers()[-1]), zelvane.servers()) == (None, before)
    assert (zelvane.clear_servers(), zelvane.servers()) == (None, [])
    assert (zelvane.remove_unit("12"), zelvane.units()) == (None, ["007"])
    assert [(kind.number, kind.model_index) for kind in zelvane.ups_types()] == [(0, -1), (10, 12), (3, 3)]
    assert [zelvane.model_name(index) for index in (-1, 88)] == ["AUTO", None]


def test_browse_list(tmp_path):
    path = tmp_path / "zelbrws.cfg"
    with zelvane.BrowseList(path) as network:
        tower = network.add_computer("tower", "10.0.0.7", network.add_group("Rack", network.add_group("Sítio")))
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
    log = zelvane.EventLog(path := root / "logevt.rgt")
    assert (len(log), len(log[-3:]), log[-1], sum(1 for _ in log)) == (74, 3, log[73], 74)
    assert repr(log[4]) == "Event(2005-03-04 14:07:07, code=3, text='Battery low, 10.8 V, 28 °C')"
    assert (log.count(1), log.count(1, last=datetime.date(2005, 3, 3)), log.count(1, NIGHT)) == (24, 0, 0)
    assert log.duration(1, [2, 40000]) == datetime.timedelta(seconds=8214)
    assert (memoryview(log.records).itemsize, bytes(memoryview(log.records))) == (68, path.read_bytes())
    log.append(300, "fim é agora", NIGHT), log.append(301, b"\1\2", NIGHT - datetime.timedelta(seconds=1))
    assert (len(log), log[74].text, log[75].payload[:3]) == (76, "fim é agora", b"\1\2\0")
    assert (log.verify()["out_of_order"], zelvane.EventLog(path, limit=2).append(302)) == ([75], None)
    assert [event.code for event in zelvane.EventLog(path)] == [301, 302]
    (damaged := root / os.fsdecode(b"\xff.rgt")).write_bytes(bytes(69))
    with pytest.warns(RuntimeWarning, match="damaged"):
        assert zelvane.EventLog(damaged).verify()["torn_bytes"] == 1


def test_text_log_schedule_and_language(root, tmp_path):
    zelvane.TextLog(tmp_path / "log.txt").write("Olá", NIGHT)
    assert (tmp_path / "log.txt").read_bytes().rsplit(b" ", 2)[::2] == [b"07/03/2026 22:30:00", b"Ol\xe1\n"]
    entries = [datetime.datetime(2037, 5, 1, 8), datetime.datetime(2037, 1, 1)]
    [zelvane.Schedule(tmp_path / "schedule").add(entry) for entry in entries]
    schedule = zelvane.Schedule(tmp_path / "schedule")
    assert list(schedule) == schedule[:] == entries[::-1]
    assert (schedule.remove(entries[1].date()), len(schedule), schedule.next()) == (None, 1, entries[0])
    (root / "zellang.cfg").write_bytes(b"[LANG]\n1 = Portugu\xeas\n[1]\n12 = Liga\xe7\xe3o\n")
    lang = zelvane.Language(1)
    lang[12] = "minha"
    assert (lang[12], lang.installed(12), lang.name(1), 13 in lang) == ("minha", "Ligação", "Português", False)
    assert zelvane.LanguageFile(root / "home" / ".zellang.cfg", 1)[12] == "minha"


def test_system():
    child = subprocess.Popen(["sleep", "60"])
    (process,) = [process for process in zelvane.processes() if process.pid == child.pid]
    assert (process.name, process.command, process.ppid) == ("sleep", "sleep 60", os.getpid())
    assert (process.kill(), child.wait()) == (None, -15)
    assert [zelvane.Service(service.name).path == service.path for service in zelvane.services()[:1]] in ([], [True])


def test_crypto(tmp_path):
    for _, message, digest in re.findall(r"^(\d+) (\S+) (\S+)$", (FIXTURES / "ripemd256.txt").read_text(), re.M):
        data = bytes.fromhex(message.replace("-", ""))
        ripe = zelvane.RipeMD256(data[:5])
        ripe.copy().update(b"else"), ripe.update(memoryview(data)[5:])
        assert ripe.hexdigest() == digest, message
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
    [thread.start() for thread in work], [thread.join() for thread in work]
    assert len(section) == 1200


def test_memory(root):
    (root / "big.rgt").write_bytes((root / "logevt.rgt").read_bytes() * 20)

    def work(times):
        for _ in range(times):
            log, config = zelvane.EventLog(root / "big.rgt"), zelvane.Config(root / "upscli.cfg")
            memoryview(log.records), log.verify(), log[-1].text, zelvane.BrowseList(root / "none.cfg").groups
            pytest.raises(KeyError, config.__getitem__, "NONE")
            pytest.raises(UnicodeEncodeError, config["POPUP"].update, {"B": "€"})
            zelvane.shutdown_settings(root), zelvane.Cipher("x").encrypt(b"y" * 9000)
        return tracemalloc.get_traced_memory()[0], resource.getrusage(resource.RUSAGE_SELF).ru_maxrss

    tracemalloc.start()
    before, after = work(50), work(300)
    tracemalloc.stop()
    assert after[0] - before[0] < 50_000
    # KiB. Either copy of the log would take 30,000 if it stayed.
    assert after[1] - before[1] < 8_000


def test_types(tmp_path):
    package = pathlib.Path(zelvane.__file__).parent
    mypy = [sys.executable, "-m", "mypy", "--strict", f"--cache-dir={tmp_path}", str(package)]
    assert subprocess.run(mypy, capture_output=True, text=True).stdout == "Success: no issues found in 5 source files\n"
    check = [sys.executable, "-m", "mypy.stubtest", "zelvane._zelvane", "--concise"]
    told = subprocess.run(check, capture_output=True, text=True, cwd=package.parent, env=os.environ | {"MYPYPATH": "."})
    assert [line for line in told.stdout.splitlines() if "not present" in line or "error" in line] == []
    assert [name for name in zelvane.__all__ if not getattr(zelvane, name).__doc__] == []
