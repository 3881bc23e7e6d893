"""The package, each class once, on files that the C++ side has made: tests/fixtures, and a copy of its demo-root."""
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
    """An installation: what /etc/zelvane.conf would name."""
    shutil.copytree(FIXTURES / "demo-root", tmp_path / "root")
    settings = tmp_path / "zelvane.conf"
    settings.write_text(f"[ZELVANE]\nPATH = {tmp_path}/root\nVERSION = 4.2\nZELSRV = 1\n")
    monkeypatch.setenv("ZELVANE_TEST_SETTINGS", str(settings))
    monkeypatch.setenv("HOME", str(tmp_path / "root" / "home"))
    assert zelvane.root() == f"{tmp_path}/root/"
    return tmp_path / "root"


def test_config(root):
    path = root / "upscli.cfg"
    before = path.read_bytes()
    with zelvane.Config(path, cached=True) as config:
        assert "SHUTSRV" in config and "shutsrv" in config and "NONE" not in config
        assert list(config)[:3] == ["CLILIST", "CLOSEANDSAVEAPP", "INVENTÁRIO"]
        assert config["POPUP"]["shutmessage"] == "Atenção: %c será desligado em %r s. (%m)"
        assert config.get_int("CloseAndSaveApp", "TimeLimit") == 90
        assert config.get_int("POPUP", "SHUTMESSAGE", 7) == 7
        assert config.get_int("NONE", "NONE", 0) == 0
        assert config.get_bool("SHUTSRV", "MAILSEND") is True
        assert config["SHUTSRV"].get_bool("NONE", True) is True
        config["RUNCOMMAND"]["DELAY"] = "30"
        config.section("NEW")["HALF"] = "0.5"
        config["NEW"].set_datetime("WHEN", NIGHT)
        assert path.read_bytes() == before
        config.save()
        assert config["NEW"].get_float("HALF") == 0.5
        assert config["NEW"].get_datetime("WHEN") == NIGHT
        del config["NEW"]["HALF"]
        assert len(config["NEW"]) == 1
    after = before.replace(b"DELAY = 5\n", b"DELAY = 30\n") + b"\n[NEW]\nWHEN = 07/03/2026 22:30:00"
    assert path.read_bytes() == after


REFUSED = {
    'config["SHUTSRV"]["NONE"]': KeyError,
    'config["NONE"]': KeyError,
    'config["POPUP"].pop("NONE")': KeyError,
    'config["POPUP"].update(TEXT="10 €")': UnicodeEncodeError,
    'config["POPUP"].update(TEXT="a]")': ValueError,
    'config["POPUP"].update(TEXT="a\\nb")': ValueError,
    'config["POPUP"].update(TEXT="a\\0b")': ValueError,
    'config["POPUP"].update({"a=b": "c"})': ValueError,
    'config["POPUP"].update(TEXT=None)': TypeError,
    'config["POPUP"].set_datetime("WHEN", NIGHT.replace(tzinfo=datetime.timezone.utc))': ValueError,
    'config["POPUP"].set_datetime("WHEN", NIGHT.replace(year=2039))': ValueError,
    "config.close() or list(config)": zelvane.ConfigError,
}


@pytest.mark.parametrize("call", REFUSED)
def test_config_refuses(root, call):
    before = (root / "upscli.cfg").read_bytes()
    with pytest.raises(REFUSED[call]):
        eval(call, globals(), {"config": zelvane.Config(root / "upscli.cfg")})
    assert (root / "upscli.cfg").read_bytes() == before


def test_config_errors(tmp_path):
    bad = tmp_path / "bad.cfg"
    bad.write_text("[A]\nB = 1\n[\nC = 2\n")
    with pytest.raises(zelvane.ConfigError, match="bad.cfg:3: ") as raised:
        zelvane.Config(bad)
    assert (raised.value.code, raised.value.line, raised.value.path) == (7, 3, str(bad))
    lenient = zelvane.Config(bad, read_only=True, strict=False)
    assert (lenient.error_line, dict(lenient["A"])) == (3, {"B": "1"})
    with pytest.raises(zelvane.ConfigError) as raised:
        lenient["A"]["B"] = "2"
    assert raised.value.code == 6
    with pytest.raises(FileNotFoundError):
        zelvane.Config(tmp_path / "none.cfg")
    with pytest.raises(IsADirectoryError):
        zelvane.Config(tmp_path)


def test_settings(root):
    shutdown = zelvane.shutdown_settings(root)
    assert (shutdown.server_name, shutdown.server_port, shutdown.system_shutdown) == ("nobreak-01", 4375, True)
    assert shutdown.mail_password == "segredo" and "segredo" not in repr(shutdown)
    shutdown.popup, shutdown.cmd_line = True, "/bin/sync"
    shutdown.save()
    assert zelvane.shutdown_settings() == shutdown
    with pytest.raises(ValueError, match="at most 15"):
        shutdown.server_address = "1234567890123456"
    with pytest.raises(OSError) as raised:
        zelvane.ShutdownSettings.defaults(root / "none").save()
    assert raised.value.filename == str(root / "none")
    ups = zelvane.ups_settings(root)
    assert (ups.timer_on_battery, ups.comm_port, ups.full_discharge_date) == (300000, 1, None)
    ups.full_discharge_date, ups.tcp_port = NIGHT, 4376
    ups.save()
    assert (zelvane.ups_settings(root).full_discharge_date, zelvane.ups_settings(root).tcp_port) == (NIGHT, 4376)
    client = zelvane.client_settings()
    client.lang_id = 2
    client.save()
    assert zelvane.client_settings().as_dict()["lang_id"] == 2
    assert (zelvane.installation().version, zelvane.installation().programs) == ("4.2", ["zelsrv"])


def test_lists(root):
    count = len(zelvane.servers())
    zelvane.add_server(zelvane.Server("cellar", "10.0.0.9", key=77))
    with pytest.raises(zelvane.Error):
        zelvane.add_server(zelvane.Server("cellar", "10.0.0.9"))
    assert (len(zelvane.servers()), zelvane.servers()[-1].key) == (count + 1, 77)
    zelvane.remove_server(zelvane.servers()[-1])
    zelvane.clear_servers()
    assert zelvane.servers() == []
    assert zelvane.units() == ["012", "007"]
    zelvane.remove_unit("12")
    assert zelvane.units() == ["007"]
    with pytest.raises(zelvane.Error):
        zelvane.add_unit("100")
    assert [(kind.number, kind.model_index) for kind in zelvane.ups_types()] == [(0, -1), (10, 12), (3, 3)]
    assert zelvane.model_name(-1) == "AUTO" and zelvane.model_name(88) is None


def test_browse_list(tmp_path):
    path = tmp_path / "zelbrws.cfg"
    with zelvane.BrowseList(path) as network:
        site = network.add_group("Sítio")
        tower = network.add_computer("tower", "10.0.0.7", network.add_group("Rack", site))
        network.add_unit("UPS", 5, tower)
        tower.address = "10.0.0.8"
        network.edit(tower)
        with pytest.raises(ValueError):
            network.add_group("a;b")
    path.write_bytes(path.read_bytes().replace(b"1 = Rack;0\n", b"1 = Rack;0\n7 = x;8\n8 = y;7\n"))
    network = zelvane.BrowseList(path)
    assert [[group.name for group in top.walk()] for top in network.groups] == [["Sítio", "Rack"], ["x", "y"]]
    (tower,) = network.groups[0].groups[0].computers
    assert (tower.address, tower.units[0].number, tower.group.parent.name) == ("10.0.0.8", 5, "Sítio")
    network.remove(network.groups[0])
    assert b"tower" not in path.read_bytes() and network.changed is not None
    with pytest.raises(IsADirectoryError):
        zelvane.BrowseList(tmp_path)


def test_event_log(root, tmp_path):
    log = zelvane.EventLog(root / "logevt.rgt")
    assert (len(log), len(log[-3:]), log[-1], sum(1 for _ in log)) == (74, 3, log[73], 74)
    assert (log[4].time, log[4].code) == (datetime.datetime(2005, 3, 4, 14, 7, 7), 3)
    assert log[4].text == "Battery low, 10.8 V, 28 °C" and len(log[4].payload) == 62
    assert (log.count(1), log.count(1, last=datetime.date(2005, 3, 4))) == (24, sum(e.code == 1 for e in log[:17]))
    assert log.duration(1, [2]) == datetime.timedelta(seconds=8214)
    with pytest.raises(IndexError):
        log[74]
    records = memoryview(log.records)
    assert (records.itemsize, len(records), bytes(records)) == (68, 74, (root / "logevt.rgt").read_bytes())
    log.append(300, "fim é agora", NIGHT)
    log.append(301, b"\1\2", NIGHT - datetime.timedelta(seconds=1))
    assert (len(log), log[74].text, log[75].payload[:3]) == (76, "fim é agora", b"\1\2\0")
    assert log.verify()["out_of_order"] == [75]
    with pytest.raises(ValueError):
        log.append(300, "x" * 63)
    bounded = zelvane.EventLog(root / "logevt.rgt", limit=2)
    bounded.append(302)
    assert [event.code for event in bounded] == [301, 302]
    (root / "logevt.rgt").write_bytes(bytes(69))
    with pytest.warns(RuntimeWarning, match="damaged"):
        assert zelvane.EventLog(root / "logevt.rgt").verify()["torn_bytes"] == 1
    with pytest.raises(FileNotFoundError):
        zelvane.EventLog(tmp_path / "none.rgt")
    zelvane.EventLog(tmp_path / "none.rgt", create=True).append(1)
    assert (tmp_path / "none.rgt").stat().st_size == 68


def test_text_log_schedule_and_language(root, tmp_path):
    text = zelvane.TextLog(tmp_path / "log.txt")
    text.write("Olá", NIGHT)
    assert (tmp_path / "log.txt").read_bytes().startswith(b"07/03/2026 22:30:00 ")
    assert (tmp_path / "log.txt").read_bytes().endswith(b" Ol\xe1\n")
    text.clear()
    assert (tmp_path / "log.txt").read_bytes() == b""
    moments = [datetime.datetime(2037, 5, 1, 8), datetime.datetime(2037, 1, 1)]
    schedule = zelvane.Schedule(tmp_path / "schedule")
    for moment in moments:
        schedule.add(moment)
    assert list(zelvane.Schedule(tmp_path / "schedule")) == sorted(moments)
    schedule.remove(datetime.date(2037, 1, 1))
    assert (list(schedule), schedule.next(), schedule[-1]) == ([moments[0]], moments[0], moments[0])
    (root / "zellang.cfg").write_bytes(b"[LANG]\n1 = Portugu\xeas\n[1]\n12 = Liga\xe7\xe3o\n")
    lang = zelvane.Language(1)
    lang[12] = "minha"
    assert (lang[12], lang.installed(12), lang.name(1), lang.count()) == ("minha", "Ligação", "Português", 1)
    with pytest.raises(KeyError):
        zelvane.LanguageFile(root / "zellang.cfg", 1)[13]
    assert (root / "home" / ".zellang.cfg").read_bytes() == b"[1]\n12 = minha"


def test_system():
    child = subprocess.Popen(["sleep", "60"])
    (process,) = [process for process in zelvane.processes() if process.pid == child.pid]
    assert (process.name, process.command, process.ppid) == ("sleep", "sleep 60", os.getpid())
    process.kill()
    assert child.wait() == -15
    with pytest.raises(KeyError):
        zelvane.Service("no such service")
    assert all(zelvane.Service(service.name).path == service.path for service in zelvane.services()[:1])


def test_crypto(tmp_path):
    for line in (FIXTURES / "ripemd256.txt").read_text().splitlines():
        if line[0] != "#":
            length, message, digest = line.split()
            data = bytes.fromhex(message.replace("-", ""))
            whole = zelvane.RipeMD256(data[:5])
            whole.copy().update(b"else")
            whole.update(memoryview(data)[5:])
            assert (whole.hexdigest(), len(data)) == (digest, int(length))
    assert (zelvane.b64decode(zelvane.b64encode(b"\0\xff" * 60)), zelvane.b64encode(b"")) == (b"\0\xff" * 60, b"")
    assert zelvane.decode_password("c2VncmVkbwA=") == "segredo" == zelvane.decode_password(zelvane.encode_password("segredo"))
    cipher = zelvane.Cipher("frase é secreta")
    (tmp_path / "plain").write_bytes(b"twice the same")
    cipher.encrypt_file(tmp_path / "plain", tmp_path / "old")
    assert cipher.encrypt(b"twice the same") == (tmp_path / "old").read_bytes() != b"twice the same"
    assert zelvane.Cipher("frase é secreta").decrypt((tmp_path / "old").read_bytes()) == b"twice the same"
    with pytest.raises(FileNotFoundError):
        cipher.decrypt_file(tmp_path / "none", tmp_path / "out")


def test_threads(root):
    config = zelvane.Config(root / "upscli.cfg", cached=True)
    threads = [threading.Thread(target=lambda n=n: config.section("T").update({f"K{n}_{i}": "1" for i in range(300)})) for n in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert len(config["T"]) == 1200


def test_memory(root):
    def work():
        log = zelvane.EventLog(root / "logevt.rgt")
        memoryview(log.records), log.verify(), [event.text for event in log]
        config = zelvane.Config(root / "upscli.cfg")
        pytest.raises(KeyError, lambda: config["NONE"])
        pytest.raises(UnicodeEncodeError, config.section("A").update, {"B": "€"})
        zelvane.BrowseList(root / "none.cfg").groups, zelvane.shutdown_settings(root), zelvane.Cipher("x").encrypt(b"y" * 9000)

    for _ in range(50):
        work()
    tracemalloc.start()
    peak, before = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss, tracemalloc.get_traced_memory()[0]
    for _ in range(500):
        work()
    assert tracemalloc.get_traced_memory()[0] - before < 50_000
    assert resource.getrusage(resource.RUSAGE_SELF).ru_maxrss - peak < 4_000  # KiB; 500 rounds that kept the log would take 5,000
    tracemalloc.stop()


def test_types(tmp_path):
    package = pathlib.Path(zelvane.__file__).parent
    mypy = [sys.executable, "-m", "mypy", "--strict", f"--cache-dir={tmp_path}", str(package)]
    assert subprocess.run(mypy, capture_output=True, text=True).stdout == "Success: no issues found in 5 source files\n"
    check = [sys.executable, "-m", "mypy.stubtest", "zelvane._zelvane", "--concise"]
    told = subprocess.run(check, capture_output=True, text=True, cwd=package.parent, env={**os.environ, "MYPYPATH": "."})
    assert [line for line in told.stdout.splitlines() if "not present" in line] == []
    for name in zelvane.__all__:
        assert getattr(zelvane, name).__doc__, name
