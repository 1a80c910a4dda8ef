#pragma once

#include <string>
#include <string_view>

// Keys that were made for these tests, and signatures of `signedText` by `ssh-keygen -Y sign`. Nobody has the private
// keys any more.

inline constexpr std::string_view signedText = "A manifest.\n";

inline const std::string ed25519Key = "ssh-ed25519 "
                                      "AAAAC3NzaC1lZDI1NTE5AAAAICuEJsx37ok4OolUjq15pqloyjnT6Ki59RZlxnsNoTcI";
inline const std::string ecdsaKey =
    "ecdsa-sha2-nistp256 "
    "AAAAE2VjZHNhLXNoYTItbmlzdHAyNTYAAAAIbmlzdHAyNTYAAABBBLQXt2PApMGd+4+JQ0xUGomTZsiuAn8S/hjRaSvmJn5ywUJE"
    "HgQFdntMmZZZu1sZ8xiHGvj3PqSnbtPbvQQT358=";
inline const std::string rsaKey =
    "ssh-rsa "
    "AAAAB3NzaC1yc2EAAAADAQABAAABgQCWiaPrJJC64Fy14kaWwf8SxaA9nNPW/cyD3J1nWCPfYlSN64kr+F+R7B2nfs647APqgUpw"
    "HK/WPW/aJXykZWNkOCVdWqsue2iUfCTFwo4FOmnYCuXFgAZqtMMMjiaKYSmtmBqmKxPcts2UDTPZR1n2dlsbUZPwXp50W/dd+PNF"
    "1oQppjXU9YanqDNFc549C2VwWVp/7YCCfvoOT8I0nQ1GXzCF0rHutNaHv2u9/XuZvSha7YBQEryORvcpGMGMQY+Y1By1EUMJqQXf"
    "XLG9TqaepoFDQ/PqICHTChu9eTj5mwnWYkx/q+QwTKuklhvahdV5cQHD63zJ3xMwDWeTBqxMwK1B9wLrxuefNj9LbNUKBr87Tz4X"
    "EMA1dK6KIxgxEhdF/wTETZSKxijFxMGJGnI4ntLMrGgg2jtNYbrHSYUXowOwNuJ4PK3TEIK534iiA8B4jVEVx0+Y2nQQwQdmhvxs"
    "87WnxiZ3pqTKqI7nThUp1yUqDrB3pWRK7KuOho7aZP8=";
inline const std::string shortRsaKey =
    "ssh-rsa "
    "AAAAB3NzaC1yc2EAAAADAQABAAABAQDWoLylY3DkO5vOAnR2Flg8pIr63X7jTpaQfHEin5R74L1H9zKkWpjthLJlMZpVwA9EimOQ"
    "T74pC5dQ1qgDdzcpZFMJaWkE30O3rC0Uy/fhG7GHGEXxutNFc2Qa+k9VboTZ3Ps0jYXuJWEJ0S3s16rdVWjVHU8l0hUfrhnrejAH"
    "0ThrTFxcJYxowy9Sjo+jWG1Yn52vxG5rzP9xpqLLXhAGRbfVqEp31YK4U6ILCtBSZQuTQlNai8Yt89yrdxGw9FO4W7u7nUmy188o"
    "AaqXj3vbv4V1hU6yLxtq4RIgPEJxlZB2FgRURmbbB048nMF6ClmLcmQxYQVm/O/cymXFKxNH";
inline const std::string otherCurveKey =
    "ecdsa-sha2-nistp384 "
    "AAAAE2VjZHNhLXNoYTItbmlzdHAzODQAAAAIbmlzdHAzODQAAABhBO1j3TcKV2Bvagy9nBmm1uN6OCc9tAAx1OLAK+Zei0WTRinL"
    "8lZ0o9THNNxxIRjiTKiZ/tIr3AXZx+T53sQMNGf6musy8f6bSzDYs/SeNiUFEt9K8tq2z7+FsLM9OED1xw==";

inline const std::string ed25519Signature = "-----BEGIN SSH SIGNATURE-----\n"
                                            "U1NIU0lHAAAAAQAAADMAAAALc3NoLWVkMjU1MTkAAAAgK4QmzHfuiTg6iVSOrXmmqWjKOd\n"
                                            "PoqLn1FmXGew2hNwgAAAARa3ZyZWZsYXNoLWFyY2hpdmUAAAAAAAAABnNoYTUxMgAAAFMA\n"
                                            "AAALc3NoLWVkMjU1MTkAAABAbQDCU7cZ761yoXHsCVzJ6qc3oyEYGGpj7TsMBJSAc1CZqh\n"
                                            "ML60LLRjcyxC5fcBkuPGWq/74j4UL3r5f8IDT1DA==\n"
                                            "-----END SSH SIGNATURE-----\n";
inline const std::string ecdsaSignature = "-----BEGIN SSH SIGNATURE-----\n"
                                          "U1NIU0lHAAAAAQAAAGgAAAATZWNkc2Etc2hhMi1uaXN0cDI1NgAAAAhuaXN0cDI1NgAAAE\n"
                                          "EEtBe3Y8CkwZ37j4lDTFQaiZNmyK4CfxL+GNFpK+YmfnLBQkQeBAV2e0yZllm7WxnzGIca\n"
                                          "+Pc+pKdu09u9BBPfnwAAABFrdnJlZmxhc2gtYXJjaGl2ZQAAAAAAAAAGc2hhNTEyAAAAZQ\n"
                                          "AAABNlY2RzYS1zaGEyLW5pc3RwMjU2AAAASgAAACEAivuO7GqHno3Nmxg5XthdzMMN1LdT\n"
                                          "LMRVfoeiLunQ6iAAAAAhAJWJHlZIzCC4VVkQKyhTiWcSZsZrJ38KP/tPgDDezoCp\n"
                                          "-----END SSH SIGNATURE-----\n";
inline const std::string rsaSignature = "-----BEGIN SSH SIGNATURE-----\n"
                                        "U1NIU0lHAAAAAQAAAZcAAAAHc3NoLXJzYQAAAAMBAAEAAAGBAJaJo+skkLrgXLXiRpbB/x\n"
                                        "LFoD2c09b9zIPcnWdYI99iVI3riSv4X5HsHad+zrjsA+qBSnAcr9Y9b9olfKRlY2Q4JV1a\n"
                                        "qy57aJR8JMXCjgU6adgK5cWABmq0wwyOJophKa2YGqYrE9y2zZQNM9lHWfZ2WxtRk/Benn\n"
                                        "Rb913480XWhCmmNdT1hqeoM0Vznj0LZXBZWn/tgIJ++g5PwjSdDUZfMIXSse601oe/a739\n"
                                        "e5m9KFrtgFASvI5G9ykYwYxBj5jUHLURQwmpBd9csb1Opp6mgUND8+ogIdMKG715OPmbCd\n"
                                        "ZiTH+r5DBMq6SWG9qF1XlxAcPrfMnfEzANZ5MGrEzArUH3AuvG5582P0ts1QoGvztPPhcQ\n"
                                        "wDV0roojGDESF0X/BMRNlIrGKMXEwYkacjie0sysaCDaO01husdJhRejA7A24ng8rdMQgr\n"
                                        "nfiKIDwHiNURXHT5jadBDBB2aG/GzztafGJnempMqojudOFSnXJSoOsHelZErsq46Gjtpk\n"
                                        "/wAAABFrdnJlZmxhc2gtYXJjaGl2ZQAAAAAAAAAGc2hhNTEyAAABlAAAAAxyc2Etc2hhMi\n"
                                        "01MTIAAAGARimWL3/QFpiCskyBadoMZeV1S2Z2N3CQOGRcHbMMt6cUqeO+sH+mYEZcFLee\n"
                                        "Cr4mhVW6nx300YIrTphMvhNKw+6b18iNnthFD61plZp2cdZrDjkf7zsTz9QeMcYEXVXJo/\n"
                                        "XAimlxAJqhOtoQ3A/WGr3u7o1mL/PFodKhTggz/pseeupV5g8wOGB4xpbU5SaDua8Ecjov\n"
                                        "9hlEEfYJv0hDn81EMUc22aFSzgbCLmgNAvYfP7w8E+MXXotbDMAJ7makJxujgSq+0cqbOJ\n"
                                        "P3lNxxtgXOQaiPO9AXlkczaAwt/aymo6EvRrz7njVtZMd6Zb4Ov2EmCdY+wQiFwiioRegC\n"
                                        "VOo5z2djup+yyzzItw6D4ZMOI/mnErl3shSClGcTplOlaA6XSFAyvzJrZCombUrBUGmKep\n"
                                        "n53iMz3vG/maccCzIwr8yF0RyAnqR+OAkartLWhLKcDuW6E1fca2pbDdqcobI32iuKPtR1\n"
                                        "85YhQTvDyiqzIj8/7JGnrzdHbVWV+ZZG\n"
                                        "-----END SSH SIGNATURE-----\n";
/// With the other digest.
inline const std::string ed25519Sha256Signature =
    "-----BEGIN SSH SIGNATURE-----\n"
    "U1NIU0lHAAAAAQAAADMAAAALc3NoLWVkMjU1MTkAAAAgK4QmzHfuiTg6iVSOrXmmqWjKOd\n"
    "PoqLn1FmXGew2hNwgAAAARa3ZyZWZsYXNoLWFyY2hpdmUAAAAAAAAABnNoYTI1NgAAAFMA\n"
    "AAALc3NoLWVkMjU1MTkAAABA3X8yQWdyjOARWLKkQ9+gbV4EDkpFUPcmhRBdqfeeCJ2wIR\n"
    "A2h2vuiW17zwNYIEoWXTCEaG/Zl4z5ABhJnENRCA==\n"
    "-----END SSH SIGNATURE-----\n";
/// Made for "file".
inline const std::string otherPurposeSignature =
    "-----BEGIN SSH SIGNATURE-----\n"
    "U1NIU0lHAAAAAQAAADMAAAALc3NoLWVkMjU1MTkAAAAgK4QmzHfuiTg6iVSOrXmmqWjKOd\n"
    "PoqLn1FmXGew2hNwgAAAAEZmlsZQAAAAAAAAAGc2hhNTEyAAAAUwAAAAtzc2gtZWQyNTUx\n"
    "OQAAAEAvcBlmJ3XjpTmMkBxdr7Qo2ru4vO1em+mgwMB0hD8G7XF29/lnybw3rVBFPBKdAx\n"
    "tIUCbvQyo8Nhw/JsPUVJYN\n"
    "-----END SSH SIGNATURE-----\n";
/// By a key of 2048 bits.
inline const std::string shortRsaSignature = "-----BEGIN SSH SIGNATURE-----\n"
                                             "U1NIU0lHAAAAAQAAARcAAAAHc3NoLXJzYQAAAAMBAAEAAAEBANagvKVjcOQ7m84CdHYWWD\n"
                                             "ykivrdfuNOlpB8cSKflHvgvUf3MqRamO2EsmUxmlXAD0SKY5BPvikLl1DWqAN3NylkUwlp\n"
                                             "aQTfQ7esLRTL9+EbsYcYRfG600VzZBr6T1VuhNnc+zSNhe4lYQnRLezXqt1VaNUdTyXSFR\n"
                                             "+uGet6MAfROGtMXFwljGjDL1KOj6NYbVifna/EbmvM/3GmosteEAZFt9WoSnfVgrhTogsK\n"
                                             "0FJlC5NCU1qLxi3z3Kt3EbD0U7hbu7udSbLXzygBqpePe9u/hXWFTrIvG2rhEiA8QnGVkH\n"
                                             "YWBFRGZtsHTjycwXoKWYtyZDFhBWb879zKZcUrE0cAAAARa3ZyZWZsYXNoLWFyY2hpdmUA\n"
                                             "AAAAAAAABnNoYTUxMgAAARQAAAAMcnNhLXNoYTItNTEyAAABAEaBymDjvuhfB708IJNHLM\n"
                                             "vNVCMunQj7UfsuG+rya2KChncXBXdqCiZhzfUygbBynqRyHDIYJEqFuXc6iseZiewX6Xck\n"
                                             "erbInzuoZsOG6AUy5/uYagwyPUaRMl+367qWNTke7rhRLVnO1kdDU0WXQb27pkNXNfxC7Q\n"
                                             "IqF/VXcjWWNq9yKgWm1hQ27ah6yWr3vh43/WAOX9pmgbdexhlUjduDYObSrPBZqFA12udM\n"
                                             "AcB2B0Xcfy0BLsw6JkmdKSZM+zDumxAuMqrBC7/ZcWLJWW3ORY8UQtb2hPz19w7c1VJ8ri\n"
                                             "NhpLY1dWkG39Up0dlkVD7xvNawK9slLITG1kEKcEE=\n"
                                             "-----END SSH SIGNATURE-----\n";
/// By a key of the curve P-384.
inline const std::string otherCurveSignature =
    "-----BEGIN SSH SIGNATURE-----\n"
    "U1NIU0lHAAAAAQAAAIgAAAATZWNkc2Etc2hhMi1uaXN0cDM4NAAAAAhuaXN0cDM4NAAAAG\n"
    "EE7WPdNwpXYG9qDL2cGabW43o4Jz20ADHU4sAr5l6LRZNGKcvyVnSj1Mc03HEhGOJMqJn+\n"
    "0ivcBdnH5PnexAw0Z/qa6zLx/ptLMNiz9J42JQUS30ry2rbPv4Wwsz04QPXHAAAAEWt2cm\n"
    "VmbGFzaC1hcmNoaXZlAAAAAAAAAAZzaGE1MTIAAACDAAAAE2VjZHNhLXNoYTItbmlzdHAz\n"
    "ODQAAABoAAAAMCsP2c9JktmYqf9JXnwCx3cxP8ZcBuAizOdmCnCHx+wFhO6zxUigOphNsq\n"
    "9FddtqNQAAADBiYx+ZuPSDr10CMLqb4EKGyBSg85ZvdXflhewCF5zlPltd5fQI8eLrx6I/\n"
    "pfXTvL4=\n"
    "-----END SSH SIGNATURE-----\n";
