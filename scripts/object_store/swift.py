"""OpenStack Swift with its S3 layer: one process stores, one serves, and a cache is between them.

The file is a program as well: Swift's servers run in processes of it.
"""

import getpass
import os
import pathlib
import sys
import time

PROGRAMS = ("memcached",)
MODULE = "swift"
KINDS = ("account", "container", "object")

COMMON = """
[DEFAULT]
bind_ip = 127.0.0.1
bind_port = {port}
bind_timeout = 2
swift_dir = {folder}
devices = {folder}/data
mount_check = false
disable_fallocate = true
fallocate_reserve = 0
conn_timeout = 5
node_timeout = 60
container_update_timeout = 60
recon_cache_path = {folder}/run
log_level = INFO
"""

WHOLE = """
[swift-hash]
swift_hash_path_prefix = test
swift_hash_path_suffix = store
[storage-policy:0]
name = Policy-0
default = yes
[swift-constraints]
max_header_size = 16384
"""

STORAGE = """
[pipeline:main]
pipeline = {kind}-server
[app:{kind}-server]
use = egg:swift#{kind}
conn_timeout = 5
node_timeout = 60
disk_chunk_size = 524288
network_chunk_size = 524288
keep_cache_private = true
"""

GATEWAY = """
[pipeline:main]
pipeline = catch_errors gatekeeper proxy-logging cache listing_formats bulk s3api users copy slo dlo versioned_writes
    symlink proxy-logging proxy-server
[app:proxy-server]
use = egg:swift#proxy
account_autocreate = true
conn_timeout = 5
node_timeout = 60
recoverable_node_timeout = 60
object_chunk_size = 524288
client_chunk_size = 524288
# There is one node only, which is never set aside after errors.
error_suppression_limit = 1000000000
error_suppression_interval = 0
[filter:catch_errors]
use = egg:swift#catch_errors
[filter:gatekeeper]
use = egg:swift#gatekeeper
[filter:proxy-logging]
use = egg:swift#proxy_logging
[filter:cache]
use = egg:swift#memcache
memcache_servers = 127.0.0.1:{cache_port}
[filter:listing_formats]
use = egg:swift#listing_formats
[filter:bulk]
use = egg:swift#bulk
[filter:s3api]
use = egg:swift#s3api
location = {region}
storage_domain = {domain}
max_upload_part_num = 10000
[filter:users]
paste.filter_factory = __main__:users
[filter:copy]
use = egg:swift#copy
[filter:slo]
use = egg:swift#slo
rate_limit_after_segment = 1000000
max_manifest_segments = 10000
max_manifest_size = 8388608
[filter:dlo]
use = egg:swift#dlo
[filter:versioned_writes]
use = egg:swift#versioned_writes
allow_object_versioning = true
[filter:symlink]
use = egg:swift#symlink
"""


def ring_of(folder, kind):
    return folder / f"{kind}.ring.gz"


def make_rings(folder, ports):
    """Where each kind of thing is stored: at the one server that there is."""
    from swift.common.ring import RingBuilder
    for kind, port in zip(KINDS, ports):
        ring = RingBuilder(4, 1, 0)
        ring.add_dev({"id": 0, "region": 1, "zone": 1, "weight": 1.0, "ip": "127.0.0.1", "port": port, "device": "d1",
                      "meta": "", "replication_ip": "127.0.0.1", "replication_port": port})
        ring.rebalance()
        ring.get_ring().save(str(ring_of(folder, kind)))


def start(folder, daemons, store, ports, _size):
    from object_store import s3
    from object_store.daemons import StoreError
    cache_port, *storage_ports = ports
    (folder / "data" / "d1").mkdir(parents=True)
    (folder / "run").mkdir()
    try:
        os.setxattr(folder / "data", "user.test", b"1")
    except OSError as error:
        raise StoreError(f"no extended attributes in {folder}: {error.strerror}") from None
    (folder / "swift.conf").write_text(WHOLE)
    storage = []
    for kind, port in zip(KINDS, storage_ports):
        (folder / f"{kind}.conf").write_text((COMMON + STORAGE).format(folder=folder, port=port, kind=kind))
        storage.append(f"{kind}-server={folder}/{kind}.conf")
    gateways = []
    for port in filter(None, (store.port, store.secure_port)):
        common = COMMON
        if port == store.secure_port:
            common += "cert_file = {folder}/certificate.pem\nkey_file = {folder}/key.pem\n"
        (folder / f"gateway-{port}.conf").write_text((common + GATEWAY).format(
            folder=folder, port=port, cache_port=cache_port, region=store.region, domain=s3.DOMAIN))
        gateways.append(f"proxy-server={folder}/gateway-{port}.conf")
    daemons.start("cache", "memcached", "-u", getpass.getuser(), "-l", "127.0.0.1", "-p", str(cache_port), "-U", "0",
                  "-m", "64")
    # Swift's modules take their time, here more than all the rest: only the two servers load them, side by side, and the
    # first of them also makes the rings.
    daemons.start("storage", sys.executable, "-B", __file__, str(folder), ",".join(map(str, storage_ports)), *storage)
    daemons.start("gateway", sys.executable, "-B", __file__, str(folder), "", *gateways)


def users(global_configuration, **configuration):
    """Swift's own test users have keys of the form ACCOUNT:USER. Here any two keys are users of one account, of whom
    only the first has a right to it."""
    from object_store import s3
    from swift.common.middleware.tempauth import TempAuth

    def make(app):
        authority = TempAuth(app, global_configuration | configuration)
        for keys, groups in ((s3.OWNER, [".admin"]), (s3.STRANGER, [])):
            authority.users[keys.access] = {"key": keys.secret, "url": "$HOST/v1/AUTH_owner", "groups": groups}
        return authority

    return make


def serve(folder, ring_ports, servers):
    """Several of Swift's servers in one process, each given as SECTION=FILE. Their log goes to standard error only."""
    import logging

    import eventlet
    import eventlet.hubs
    from swift.common import utils, wsgi
    utils.SWIFT_CONF_FILE = str(folder / "swift.conf")
    utils.ThreadSafeSysLogHandler = lambda *_, **__: logging.NullHandler()
    utils.eventlet_monkey_patch()
    utils.FALLOCATE_RESERVE, utils.FALLOCATE_IS_PERCENT = 0, False
    utils.clean_up_daemon_hygiene()
    if ring_ports:
        make_rings(folder, ring_ports)
    while not all(ring_of(folder, kind).exists() for kind in KINDS):
        time.sleep(0.01)
    # Each server chooses the hub once more; the one that runs must not be replaced.
    use_hub = eventlet.hubs.use_hub
    use_hub(wsgi.get_hub())
    eventlet.hubs.use_hub = lambda *hub: None if hub else use_hub()
    running = []
    for server in servers:
        section, _, path = server.partition("=")
        configuration, logger, name = wsgi._initrp(path, section, verbose=True)
        running.append(eventlet.spawn(wsgi.run_server, configuration, logger, wsgi.get_socket(configuration),
                                      global_conf={"log_name": name}))
    for server in running:
        server.wait()


if __name__ == "__main__":
    # The folder of this file holds a module with the name of Swift's own.
    sys.path[0] = str(pathlib.Path(__file__).parent.parent)
    serve(pathlib.Path(sys.argv[1]), [int(port) for port in sys.argv[2].split(",") if port], sys.argv[3:])
