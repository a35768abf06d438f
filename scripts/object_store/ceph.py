"""Ceph's object gateway over a cluster of one monitor and one disk, which is a sparse file.

Where the folder's file system has no direct I/O, the objects are kept in memory instead, at twice their size.
"""

import json
import shutil
import time
import uuid

from object_store import s3
from object_store.daemons import StoreError

PROGRAMS = ("ceph-mon", "ceph-osd", "radosgw", "radosgw-admin")
MODULE = "rados"

# The disk daemon takes the first free ports from here on; free_ports gives none of them.
DISK_PORTS = (26000, 31999)

CONFIGURATION = """
[global]
fsid = {cluster}
mon host = [v2:127.0.0.1:{monitor_port}]
public addr = 127.0.0.1
cluster addr = 127.0.0.1
# No passwords inside the cluster. The gateway's wish for an encrypted link to the monitor would need them.
auth cluster required = none
auth service required = none
auth client required = none
ms mon client mode = crc
ms client mode = crc
ms cluster mode = crc
ms service mode = crc
ms bind ipv4 = true
ms bind ipv6 = false
ms bind msgr1 = false
ms bind port min = {disk_ports[0]}
ms bind port max = {disk_ports[1]}
keyring = {folder}/keyring
mon data = {folder}/mon
osd data = {folder}/osd
rgw data = {folder}/rgw
run dir = {folder}/run
crash dir = {folder}/crash
log file = {folder}/$name.log
mon cluster log file = {folder}/cluster.log
admin socket =
pid file =
# One copy of everything, few pools' worth of work, and no second thoughts about either.
osd pool default size = 1
osd pool default min size = 1
osd pool default pg num = 4
osd pool default pgp num = 4
osd pool default pg autoscale mode = off
osd crush chooseleaf type = 0
mon allow pool size one = true
mon max pg per osd = 1000
mon data avail warn = 1
mon data avail crit = 1
# A fast start: changes are not gathered for a second before they are written, and a file's closing waits for its poll.
paxos propose interval = 0.05
paxos min wait = 0.01
bdev aio poll ms = 5
osd objectstore = {kind}
memstore device bytes = {size}
bluestore block size = {size}
bluestore block create = true
bluestore fsck on mkfs = false
bluestore fsck on mount = false
bluestore fsck quick fix on mount = false
bluestore cache autotune = false
bluestore cache size = 268435456
debug osd = 0/0
debug ms = 0/0
[client.rgw]
rgw frontends = {front}
rgw dns name = {domain}
rgw thread pool size = 64
rgw enable usage log = false
# What a deleted object took is free again soon.
rgw gc obj min wait = 20
rgw gc processor period = 5
# A full store refuses; it does not hang.
rados osd op timeout = 30
rados mon op timeout = 30
"""


def configure(folder, store, monitor_port, cluster, kind, size):
    front = f"beast tcp_nodelay=1 endpoint=127.0.0.1:{store.port}"
    if store.secure_port:
        front += (f" ssl_endpoint=127.0.0.1:{store.secure_port} ssl_certificate={folder}/certificate.pem"
                  f" ssl_private_key={folder}/key.pem")
    path = folder / "ceph.conf"
    path.write_text(CONFIGURATION.format(folder=folder, monitor_port=monitor_port, cluster=cluster, kind=kind,
                                         size=size * 1048576, front=front, domain=s3.DOMAIN, disk_ports=DISK_PORTS))
    return path


class Monitor:
    """A connection to the monitor."""

    def __init__(self, configuration, check):
        import rados  # the other engine does without
        self.check = check
        self.cluster = rados.Rados(conffile=str(configuration), name="client.admin")
        while True:
            try:
                self.cluster.connect(timeout=5)
                return
            except rados.Error:
                check()

    def ask(self, **command):
        code, answer, reason = self.cluster.mon_command(json.dumps(command | {"format": "json"}), b"", timeout=30)
        if code != 0:
            raise StoreError(f"the monitor refuses {command['prefix']}: {reason}")
        return json.loads(answer or "null")

    def wait_for_disk(self):
        while self.ask(prefix="osd stat")["num_up_osds"] != 1:
            self.check()
            time.sleep(0.02)

    def close(self):
        self.cluster.shutdown()


def make_disk(folder, daemons, configure_for, disk):
    for kind in ("bluestore", "memstore"):
        (folder / "osd").mkdir(exist_ok=True)
        configuration = configure_for(kind)
        try:
            daemons.run("ceph-osd", "-c", configuration, "-i", "0", "--mkfs", "--osd-uuid", disk)
            return
        except StoreError:
            if kind == "memstore":
                raise
            shutil.rmtree(folder / "osd")


def make_users(daemons, configuration, region):
    def admin(*command):
        return daemons.run("radosgw-admin", "-c", configuration, *command)

    for name, keys in (("owner", s3.OWNER), ("stranger", s3.STRANGER)):
        admin("user", "create", f"--uid={name}", f"--display-name={name}", f"--access-key={keys.access}",
              f"--secret-key={keys.secret}")
    # What a question for a bucket's place is answered with: by custom nothing for the first of all regions.
    group = json.loads(admin("zonegroup", "get"))
    group["api_name"] = "" if region == "us-east-1" else region
    described = daemons.folder / "zonegroup.json"
    described.write_text(json.dumps(group))
    admin("zonegroup", "set", "--infile", described)


def start(folder, daemons, store, ports, size):
    for name in ("mon", "rgw", "run", "crash"):
        (folder / name).mkdir()
    cluster, disk = str(uuid.uuid4()), str(uuid.uuid4())

    def configure_for(kind):
        return configure(folder, store, ports[0], cluster, kind, size)

    configuration = configure_for("bluestore")
    daemons.run("ceph-mon", "-c", configuration, "-i", "a", "--mkfs", "--fsid", cluster, "--public-addrv",
                f"[v2:127.0.0.1:{ports[0]}]")
    daemons.start("monitor", "ceph-mon", "-c", configuration, "-i", "a", "-f")
    monitor = Monitor(configuration, daemons.check)
    try:
        monitor.ask(prefix="osd new", uuid=disk)
        make_disk(folder, daemons, configure_for, disk)
        daemons.start("disk", "ceph-osd", "-c", configuration, "-i", "0", "-f")
        monitor.wait_for_disk()
    finally:
        monitor.close()
    make_users(daemons, configuration, store.region)
    daemons.start("gateway", "radosgw", "-c", configuration, "-n", "client.rgw", "-f")
